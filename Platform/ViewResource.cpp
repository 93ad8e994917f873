#include "Platform/ViewResource.h"

#include "Formats/XMLDocument.h"

#include <charconv>
#include <optional>

namespace platform {
namespace {

template <class Number>
std::optional<Number> numberAttribute(const XMLNode& node, std::string_view name) {
    const std::optional<std::string_view> text = node.attributeForName(name);
    if (!text) return std::nullopt;
    Number number{};
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), number);
    if (error != std::errc() || end != text->data() + text->size()) return std::nullopt;
    return number;
}

class ViewReader {
public:
    ViewReader(ViewResource& resource, const std::function<std::string(std::string_view)>& localize)
        : resource_(resource), localize_(localize) {}

    // Null for an element that describes no view, and then problem() says which.
    std::shared_ptr<View> read(const XMLNode& element) {
        std::shared_ptr<View> view = make(element);
        if (view == nullptr || !readFrame(element, *view)) {
            if (problem_.empty()) problem_ = "<" + std::string(element.name()) + "> is no view with a frame";
            return nullptr;
        }
        view->setTag(numberAttribute<std::int64_t>(element, "tag").value_or(0));
        if (const auto outlet = element.attributeForName("outlet"))
            resource_.outlets.emplace_back(*outlet, view);
        for (std::size_t i = 0; i < element.childCount(); ++i) {
            const XMLNode& child = *element.childAtIndex(i);
            if (!child.isElement()) continue;
            std::shared_ptr<View> subview = read(child);
            if (subview == nullptr) return nullptr;
            view->addSubview(std::move(subview));
        }
        return view;
    }

    const std::string& problem() const { return problem_; }

private:
    std::shared_ptr<View> make(const XMLNode& element) {
        if (element.name() == "view") return std::make_shared<View>();
        if (element.name() == "label") {
            auto label = std::make_shared<TextField>();
            label->setStringValue(localize_(element.stringValue()));
            return label;
        }
        if (element.name() != "popUp") return nullptr;
        auto popUp = std::make_shared<PopUpButton>();
        if (const auto action = element.attributeForName("action"))
            resource_.actions.emplace_back(*action, popUp);
        return popUp;
    }

    static bool readFrame(const XMLNode& element, View& view) {
        const auto number = [&element](
                                std::string_view name) { return numberAttribute<double>(element, name); };
        const auto x = number("x");
        const auto y = number("y");
        const auto width = number("width");
        const auto height = number("height");
        if (!x || !y || !width || !height) return false;
        view.setFrame({{*x, *y}, *width, *height});
        return true;
    }

    ViewResource& resource_;
    const std::function<std::string(std::string_view)>& localize_;
    std::string problem_;
};

} // namespace

bool ViewResource::read(
    std::string_view bytes, const std::function<std::string(std::string_view)>& localize, Failure& error) {
    const std::shared_ptr<const XMLDocument> document = XMLDocument::parse(bytes, error);
    if (document == nullptr) return false;
    ViewReader reader(*this, localize);
    root = reader.read(*document->rootElement());
    if (root == nullptr) error = reader.problem();
    return root != nullptr;
}

} // namespace platform
