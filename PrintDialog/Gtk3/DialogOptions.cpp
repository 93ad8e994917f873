#include "PrintDialog/Gtk3/DialogOptions.h"

#include "PrintDialog/Gtk3/Guarded.h"

#include <array>
#include <cstring>
#include <string_view>
#include <utility>

namespace orvan {
namespace {

struct NamedOption {
    std::string_view gtkName;
    std::string_view keyword;
};
constexpr std::array<NamedOption, 4> kNamedOptions{{
    {"gtk-paper-type", "MediaType"},
    {"gtk-paper-source", "InputSlot"},
    {"gtk-output-tray", "OutputBin"},
    {"gtk-duplex", "Duplex"},
}};
constexpr std::string_view kPrefix = "cups-";

// "" when the option stands for none of the PPD.
std::string_view keywordOf(std::string_view gtkName) {
    if (gtkName.starts_with(kPrefix)) return gtkName.substr(kPrefix.size());
    for (const NamedOption& named : kNamedOptions)
        if (named.gtkName == gtkName) return named.keyword;
    return {};
}

std::string_view nameOf(GObject* option) {
    struct Layout {
        GObject parent;
        const char* name;
    };
    const char* name = nullptr;
    std::memcpy(&name, reinterpret_cast<const char*>(option) + offsetof(Layout, name), sizeof name);
    return name != nullptr ? name : "";
}

std::string valueOf(GObject* option) {
    char* value = nullptr;
    g_object_get(option, "value", &value, nullptr);
    const GLibString owner(value);
    return value != nullptr ? value : "";
}

} // namespace

struct DialogOptions::Option {
    Option(DialogOptions& dialogOptions, std::string_view ppdKeyword, GObject* gtkOption)
        : owner(dialogOptions),
          keyword(ppdKeyword),
          object(retain(gtkOption)),
          changed(gtkOption, "changed", G_CALLBACK(onChanged), this) {}

    static void onChanged(GObject*, Option* self) {
        guarded([self] { self->owner.handler_(self->keyword, self->choice()); });
    }

    std::string choice() const {
        std::string value = valueOf(object.get());
        return value == kAsPrinterIsSet ? std::string() : value;
    }

    DialogOptions& owner;
    std::string keyword;
    GObjectRef<GObject> object;
    SignalConnection changed;
};

DialogOptions::DialogOptions(GtkPrintUnixDialog* dialog, ChangeHandler handler)
    : handler_(std::move(handler)) {
    collect(GTK_WIDGET(dialog));
}

DialogOptions::~DialogOptions() = default;

void DialogOptions::collect(GtkWidget* widget) {
    if (std::strcmp(G_OBJECT_TYPE_NAME(widget), "GtkPrinterOptionWidget") == 0) {
        GObject* source = nullptr;
        g_object_get(widget, "source", &source, nullptr);
        if (source == nullptr) return;
        const GObjectRef<GObject> owner(source);
        adopt(source);
    } else if (GTK_IS_CONTAINER(widget)) {
        const auto visit = [](GtkWidget* child, gpointer self) {
            static_cast<DialogOptions*>(self)->collect(child);
        };
        gtk_container_forall(GTK_CONTAINER(widget), visit, this);
    }
}

void DialogOptions::adopt(GObject* option) {
    if (std::strcmp(G_OBJECT_TYPE_NAME(option), "GtkPrinterOption") != 0) return;
    const std::string_view keyword = keywordOf(nameOf(option));
    if (keyword.empty()) return;
    options_.try_emplace(std::string(keyword), std::make_unique<Option>(*this, keyword, option));
}

std::map<std::string, std::string> DialogOptions::values() const {
    std::map<std::string, std::string> values;
    for (const auto& [keyword, option] : options_)
        if (std::string choice = option->choice(); !choice.empty())
            values.emplace(keyword, std::move(choice));
    return values;
}

bool DialogOptions::write(const std::string& keyword, const std::string& choice) {
    const auto found = options_.find(keyword);
    if (found == options_.end()) return false;
    const Option& option = *found->second;
    const SignalConnection::Block block(option.changed);
    g_object_set(option.object.get(), "value", choice.c_str(), nullptr);
    return option.choice() == choice;
}

} // namespace orvan
