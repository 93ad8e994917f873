// The names that people gave the printer's custom paper types: asked for when the panel is created, and put
// into the paper-type list when it is first shown.
#include "Common/PPDUtilities.h"
#include "Common/TicketVocabulary.h"
#include "Common/Utilities/ReleaseGates.h"
#include "Formats/TextEncoding.h"
#include "OrvanPaperOptions/Source/OrvanPaperOptions.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>

namespace orvan {
namespace {

constexpr std::string_view kCustomType = "CustomType";
constexpr std::size_t kMostTypesOfAResponse = 5;

// The custom type's place in the order of the printer that a choice keyword names, counted from 0; nothing
// when it names none that can be.
std::optional<std::size_t> placeNamedBy(const std::string& keyword) {
    const long long number = std::strtoll(keyword.c_str() + kCustomType.size(), nullptr, 10);
    if (number < 1) return std::nullopt;
    return static_cast<std::size_t>(number - 1);
}

template <std::size_t size>
void writeField(char (&field)[size], std::string_view text) {
    std::memset(field, 0, size);
    std::memcpy(field, text.data(), std::min(text.size(), size - 1));
}

} // namespace

// The channel holds its delegate, and the panel holds the channel. This stands between the two and holds
// neither, so that a dialog which lets go of its panel ends it, whatever the printer does.
class OrvanPaperOptions::ResponseForwarder final : public OrvanBiDiDelegate {
public:
    explicit ResponseForwarder(std::weak_ptr<OrvanPaperOptions> panel) : panel_(std::move(panel)) {}

    void receivedBiDiResponse(const platform::PropertyList& response) override {
        if (const auto panel = panel_.lock()) panel->receivedBiDiResponse(response);
    }

private:
    std::weak_ptr<OrvanPaperOptions> panel_;
};

void OrvanPaperOptions::startPrinterQuery() {
    ovBiDi_ = OrvanBiDi::initWithPDECallbackObject(pdePluginCallbackObject_);
    ovBiDi_->setDelegate(std::make_shared<ResponseForwarder>(weak_from_this()));
    ovBiDi_->dispatchCommands(supportedCommandsInPPD(ppd_));
}

bool OrvanPaperOptions::awaitsPrinter() const {
    if (ovBiDi_ == nullptr) return false;
    const OrvanBiDi::State state = ovBiDi_->state();
    return state == OrvanBiDi::State::waiting || state == OrvanBiDi::State::filterRunning;
}

void OrvanPaperOptions::receivedBiDiResponse(const platform::PropertyList& response) {
    if (response.find(OVOVGCustomPaperTypes) != nullptr) retrieveCustomPaperTypes(response);
}

void OrvanPaperOptions::retrieveCustomPaperTypes(const platform::PropertyList& response) {
    const platform::PropertyList* const types = response.find(OVOVGCustomPaperTypes);
    const platform::PropertyList::List* const list = types != nullptr ? types->asList() : nullptr;
    if (list == nullptr || !cpt_) return;
    for (std::size_t i = 0; i < std::min(list->size(), kMostTypesOfAResponse); ++i)
        cpt_->push_back((*list)[i]);
}

std::int32_t OrvanPaperOptions::queryPrinterForCPTsThread() {
    canQueryCPTs_ = true;
    updatePaperTypeListForCustomPaperTypes();
    const OptionRow& paperTypes = rows_[kPaperTypeRow.row - 1U];
    InitPopUpFromArray(paperTypes.popUp.get(), paperTypes.choices.get());
    return 0;
}

void OrvanPaperOptions::updatePaperTypeListForCustomPaperTypes() {
    PDEChoiceList* const choices = rows_[kPaperTypeRow.row - 1U].choices.get();
    if (!canQueryCPTs_ || choices == nullptr || !cpt_) return;
    std::erase_if(*choices, [this](std::shared_ptr<PDEChoice>& entry) {
        const std::string* const keyword = entry->ppdTitle();
        if (keyword == nullptr || keyword->find(kCustomType) == std::string::npos) return false;
        const std::optional<std::size_t> place = placeNamedBy(*keyword);
        if (!place || *place >= cpt_->size()) return true;
        if (rename(*entry->choice(), (*cpt_)[*place])) entry = PDEChoice::choiceWithChoice(entry->choice());
        return false;
    });
}

// A name that is too long for the record is cut between two characters. A keyword cannot be cut, because then
// it would be another one.
bool OrvanPaperOptions::rename(ppd_choice_t& record, const platform::PropertyList& customType) {
    const std::string* const name = customType.findString("name");
    const std::string* const type = customType.findString("type");
    if (name == nullptr || name->empty() || type == nullptr) return false;
    const std::string keyword = std::string(kCustomType) + *type;
    if (keyword.size() >= sizeof record.choice || name->find('\0') != std::string::npos ||
        keyword.find('\0') != std::string::npos)
        return false;
    writeField(record.text, platform::prefixOfUTF8(*name, sizeof record.text - 1));
    writeField(record.choice, keyword);
    return true;
}

} // namespace orvan
