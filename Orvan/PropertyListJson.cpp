#include "Orvan/PropertyListJson.h"

#include "Formats/Base64.h"
#include "Formats/PropertyListDate.h"
#include "Formats/TextEncoding.h"

namespace orvan {

using Json = nlohmann::ordered_json;

Json jsonFromPropertyList(const platform::PropertyList& list) {
    if (const std::string* text = list.asString()) return *text;
    if (const auto integer = list.asInteger()) return *integer;
    if (const auto integer = list.asUnsignedInteger()) return *integer;
    if (const auto boolean = list.asBoolean()) return *boolean;
    if (const auto real = list.asReal()) return *real;
    if (const auto date = list.asDate()) return {{"date", platform::formatPropertyListDate(*date)}};
    if (const platform::PropertyList::Data* data = list.asData()) {
        std::string text;
        platform::appendBase64(text, *data);
        return {{"data", text}};
    }
    if (const platform::PropertyList::List* items = list.asList()) {
        Json array = Json::array();
        for (const platform::PropertyList& item : *items)
            array.push_back(jsonFromPropertyList(item));
        return array;
    }
    Json object = Json::object();
    if (const platform::PropertyList::Dictionary* dictionary = list.asDictionary())
        for (const auto& [key, value] : *dictionary)
            object[key] = jsonFromPropertyList(value);
    return object;
}

std::string jsonText(const nlohmann::ordered_json& json, int indent) {
    return json.dump(indent, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

} // namespace orvan
