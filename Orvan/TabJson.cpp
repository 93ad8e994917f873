#include "Orvan/TabJson.h"

#include "Platform/Controls.h"

#include <nlohmann/json.hpp>

#include <string>
#include <utility>

namespace orvan {
namespace {

using Json = nlohmann::ordered_json;

void describeTitle(Json& json, const platform::ControlTitle& title) {
    json["title"] = title.text;
    json["letter"] = title.letter != 0 ? Json(std::string(1, title.letter)) : Json(nullptr);
}

void describe(Json& json, const platform::TextField& field) {
    json["kind"] = field.role() == platform::TextField::Role::status ? "status" : "text";
    json["text"] = field.stringValue();
}

void describe(Json& json, const platform::Button& button) {
    json["kind"] = "button";
    describeTitle(json, button.title());
}

void describe(Json& json, const platform::TextEntry& entry) {
    json["kind"] = "entry";
    json["label"] = entry.label();
    json["text"] = entry.stringValue();
}

void describe(Json& json, const platform::LevelIndicator& level) {
    json["kind"] = "level";
    json["text"] = level.stringValue();
    json["percent"] = level.percent() ? Json(*level.percent()) : Json(nullptr);
    json["color"] = level.color().empty() ? Json(nullptr) : Json(level.color());
}

void describe(Json& json, const platform::Menu& menu) {
    json["kind"] = "menu";
    describeTitle(json, menu.title());
    json["enabled"] = menu.isEnabled();
    json["selected"] = menu.selected() ? Json(*menu.selected()) : Json(nullptr);
    Json entries = Json::array();
    for (const platform::MenuEntry& entry : menu.entries())
        entries.push_back(
            entry.isLine ? Json{{"line", true}} : Json{{"title", entry.title}, {"keyword", entry.keyword}});
    json["entries"] = std::move(entries);
}

template <class Kind>
bool describedAs(Json& json, const platform::View& view) {
    const auto* const kind = dynamic_cast<const Kind*>(&view);
    if (kind != nullptr) describe(json, *kind);
    return kind != nullptr;
}

template <class Views>
Json viewsJson(const Views& views) {
    Json list = Json::array();
    for (const auto& view : views)
        if (!view->isHidden()) list.push_back(tabJson(*view));
    return list;
}

} // namespace

Json tabJson(const platform::View& view) {
    Json json = Json::object();
    if (describedAs<platform::TextField>(json, view) || describedAs<platform::Button>(json, view) ||
        describedAs<platform::TextEntry>(json, view) || describedAs<platform::LevelIndicator>(json, view) ||
        describedAs<platform::Menu>(json, view))
        return json;
    if (const auto* const form = dynamic_cast<const platform::Form*>(&view)) {
        json["kind"] = "form";
        json["views"] = viewsJson(form->menus());
        return json;
    }
    const auto* const disclosure = dynamic_cast<const platform::Disclosure*>(&view);
    const auto* const stack = dynamic_cast<const platform::Stack*>(&view);
    json["kind"] = disclosure != nullptr ? "disclosure" : stack != nullptr ? "stack" : "scroll";
    if (disclosure != nullptr) {
        describeTitle(json, disclosure->title());
        json["unfolded"] = disclosure->isUnfolded();
    }
    if (stack != nullptr)
        json["axis"] = stack->axis() == platform::Stack::Axis::vertical ? "vertical" : "horizontal";
    json["views"] = viewsJson(view.subviews());
    return json;
}

} // namespace orvan
