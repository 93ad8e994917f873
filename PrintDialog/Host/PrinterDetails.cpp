#include "PrintDialog/Host/PrinterDetails.h"

#include "Common/TicketVocabulary.h"
#include "PrintDialog/Host/HostText.h"
#include "PrintDialog/Host/PrinterAnswers.h"
#include "PrintDialog/Host/PrinterPage.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace orvan {
namespace {

struct ColorOf {
    std::string_view colorant;
    const char* color;
};
constexpr std::array<ColorOf, 4> kColors{{
    {OVCPSSCyanColorant, "#00AEEF"},
    {OVCPSSMagentaColorant, "#EC008C"},
    {OVCPSSYellowColorant, "#FFE600"},
    {OVCPSSBlackColorant, "#202020"},
}};

// Fills a view anew, with the children that it has.
class Filling {
public:
    explicit Filling(platform::View& view) : view_(view), before_(view.subviews()) {
        view_.removeAllSubviews();
    }

    // The next child.
    template <class Kind>
    Kind& next() {
        const std::size_t place = view_.subviews().size();
        auto child = place < before_.size() ? std::dynamic_pointer_cast<Kind>(before_[place]) : nullptr;
        if (child == nullptr) child = std::make_shared<Kind>();
        view_.addSubview(child);
        return *child;
    }

private:
    platform::View& view_;
    std::vector<std::shared_ptr<platform::View>> before_;
};

void addText(Filling& filling, std::string text) {
    filling.next<platform::TextField>().setStringValue(std::move(text));
}

std::string percentText(std::int64_t percent, const std::string& language) {
    return hostText(language, "%1 %", {std::to_string(percent)});
}

// A full tray needs no word.
std::string levelText(const Level& level, const std::string& language) {
    constexpr std::int64_t kFull = 100;
    if (level.isEmpty()) return hostText(language, "empty");
    if (level.isLow) return hostText(language, "nearly empty");
    return level.percent && *level.percent < kFull ? percentText(*level.percent, language) : level.word;
}

std::string trayText(const Tray& tray, const std::string& language) {
    std::string text;
    for (const std::string& part : {tray.paper, tray.size, levelText(tray.level, language)})
        if (!part.empty()) text.append(text.empty() ? "" : ", ").append(part);
    return text.empty() ? tray.name : hostText(language, "%1: %2", {tray.name, text});
}

void addSupply(Filling& filling, const Supply& supply, const std::string& language) {
    auto& level = filling.next<platform::LevelIndicator>();
    const std::string told =
        supply.level.percent ? percentText(*supply.level.percent, language) : supply.level.word;
    level.setStringValue(told.empty() ? supply.name : hostText(language, "%1: %2", {supply.name, told}));
    level.setPercent(
        supply.level.percent ? std::optional(static_cast<int>(*supply.level.percent)) : std::nullopt);
    const auto color = std::ranges::find(kColors, supply.colorant, &ColorOf::colorant);
    level.setColor(color != kColors.end() ? color->color : "");
}

// The answer that tells of trays and supplies; null when there is none.
const StoredAnswer* answerWithTrays(const std::vector<StoredAnswer>& answers) {
    const auto found = std::ranges::find_if(answers, [](const StoredAnswer& answer) {
        return answer.list && (answer.list->find(OVCPSSInputTrays) != nullptr ||
                                  answer.list->find(OVCPSSColorantHousing) != nullptr);
    });
    return found != answers.end() ? &*found : nullptr;
}

} // namespace

void updatePrinterDetails(platform::Disclosure& details, const std::vector<StoredAnswer>& answers,
    const DialogPPD& ppd, const PanelSession::Summary& summary) {
    const std::string& language = ppd.language();
    Filling filling(details);
    if (const StoredAnswer* const told = answerWithTrays(answers)) {
        std::vector<platform::PropertyList> lists;
        for (const StoredAnswer& answer : answers)
            if (answer.list) lists.push_back(*answer.list);
        const PrinterPage page = pageOf(lists, &ppd);
        for (const Tray& tray : page.trays.value_or(std::vector<Tray>()))
            addText(filling, trayText(tray, language));
        for (const Supply& supply : page.supplies.value_or(std::vector<Supply>()))
            addSupply(filling, supply, language);
        addText(
            filling, hostText(language, "The printer told this at %1.",
                         {told->askedAt ? timeText(*told->askedAt) : hostText(language, "an earlier time")}));
    }
    for (const auto& [title, value] : summary)
        addText(filling, hostText(language, "%1: %2", {title, value}));
}

} // namespace orvan
