#include "PrintDialog/Host/PanelForm.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace orvan {
namespace {

double middleOf(const platform::View& view) {
    return view.frame().origin.y + view.frame().height / 2;
}

using Line = std::vector<platform::View*>;

// The controls that can be seen, line by line from the top, each from the left: a control whose middle is
// within another's height is on its line.
std::vector<Line> linesOf(const platform::View& root) {
    Line controls;
    for (const auto& view : root.subviews())
        if (!view->isHidden()) controls.push_back(view.get());
    std::ranges::stable_sort(
        controls, std::ranges::greater{}, [](const auto* view) { return middleOf(*view); });

    std::vector<Line> lines;
    for (platform::View* control : controls) {
        if (!lines.empty()) {
            const platform::View& first = *lines.back().front();
            const double reach = std::max(first.frame().height, control->frame().height) / 2;
            if (middleOf(first) - middleOf(*control) < reach) {
                lines.back().push_back(control);
                continue;
            }
        }
        lines.push_back({control});
    }
    for (Line& line : lines)
        std::ranges::stable_sort(line, {}, [](const auto* view) { return view->frame().origin.x; });
    return lines;
}

} // namespace

std::unique_ptr<PanelForm> PanelForm::create(PanelSession& session, Mnemonics& mnemonics,
    std::shared_ptr<platform::Menu> first, const std::function<void()>& picked) {
    std::shared_ptr<platform::View> content = session.view();
    if (content == nullptr) return nullptr;
    std::unique_ptr<PanelForm> form(new PanelForm(session));
    for (const Line& line : linesOf(*content)) {
        std::string label;
        for (platform::View* control : line) {
            if (const auto* text = dynamic_cast<const platform::TextField*>(control))
                label = text->stringValue();
            if (auto* popUp = dynamic_cast<platform::PopUpButton*>(control))
                form->addRow(
                    *popUp, mnemonics.titled(std::exchange(label, std::string()), popUp->optionKeyword()));
        }
    }
    std::vector<std::shared_ptr<platform::Menu>> menus;
    menus.reserve(form->rows_.size() + 1);
    if (first != nullptr) menus.push_back(std::move(first));
    for (const Row& row : form->rows_) {
        menus.push_back(row.menu);
        row.menu->setAction([form = form.get(), menu = row.menu.get(), picked](
                                std::size_t index) { form->pick(*menu, index, picked); });
    }
    form->view_ = std::make_shared<platform::Form>(std::move(content), std::move(menus));
    form->update();
    return form;
}

PanelForm::~PanelForm() {
    for (const Row& row : rows_)
        row.menu->setAction({});
}

void PanelForm::addRow(platform::PopUpButton& popUp, platform::ControlTitle title) {
    auto menu = std::make_shared<platform::Menu>();
    menu->setTitle(std::move(title));
    rows_.push_back({&popUp, std::move(menu), {}});
}

platform::Menu* PanelForm::menuOf(const std::string& option) const {
    for (const Row& row : rows_)
        if (!option.empty() && row.popUp->optionKeyword() == option) return row.menu.get();
    return nullptr;
}

std::string PanelForm::optionOf(const platform::View* menu) const {
    for (const Row& row : rows_)
        if (row.menu.get() == menu) return row.popUp->optionKeyword();
    return {};
}

void PanelForm::pick(const platform::Menu& menu, std::size_t index, const std::function<void()>& picked) {
    const auto row = std::ranges::find_if(rows_, [&](const Row& other) { return other.menu.get() == &menu; });
    const std::int64_t place = row->places[index];
    row->popUp->pick(place); // refuses a choice that it does not offer
    const std::function<void()> told = picked;
    update();
    if (told) told();
}

void PanelForm::update() {
    for (Row& row : rows_) {
        ShownPopUp shown = session_.shown(*row.popUp);
        row.places.clear();
        row.places.reserve(shown.items.size());
        std::vector<platform::MenuEntry> entries;
        entries.reserve(shown.items.size());
        for (ShownItem& item : shown.items) {
            row.places.push_back(item.place);
            entries.push_back({std::move(item.title), std::move(item.keyword), item.enabled, item.isLine});
        }
        row.menu->setEntries(std::move(entries),
            shown.selected < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(shown.selected)));
        row.menu->setEnabled(row.popUp->isEnabled());
        row.menu->setHidden(row.popUp->isHidden());
    }
}

} // namespace orvan
