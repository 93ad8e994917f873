#include "PrintDialog/Gtk/DialogOptions.h"

#include "PrintDialog/Gtk/Guarded.h"
#include "PrintDialog/Gtk/Widgets.h"

#include <array>
#include <cstring>
#include <string_view>
#include <utility>

// Exported for GTK's print back ends, though no header has it; null where it is not.
extern "C" __attribute__((weak)) GObject* gtk_printer_option_new(
    const char* name, const char* title, int type);

namespace orvan {
namespace {

constexpr const char* kWidgetType = "GtkPrinterOptionWidget";
constexpr const char* kOptionType = "GtkPrinterOption";

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

// What GTK has behind an option. Only the name is read.
struct OptionLayout {
    GObject parent;
    const char* name;
    char* title;
    int type;
    char* value;
    int choiceCount;
    char** choices;
    char** choiceTitles;
    gboolean activatesDefault;
    gboolean hasConflict;
    char* group;
};

std::string_view nameOf(GObject* option) {
    const char* name = nullptr;
    std::memcpy(&name, reinterpret_cast<const char*>(option) + offsetof(OptionLayout, name), sizeof name);
    return name != nullptr ? name : "";
}

struct UnrefClass {
    void operator()(gpointer type) const { g_type_class_unref(type); }
};

GParamSpec* propertyOf(GType type, const char* name) {
    const std::unique_ptr<void, UnrefClass> owner(g_type_class_ref(type));
    return g_object_class_find_property(G_OBJECT_CLASS(owner.get()), name);
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

std::string DialogOptions::unknownPart(GtkPrintUnixDialog* dialog) {
    if (!GTK_IS_DIALOG(dialog)) return "the dialog";
    const GType widget = g_type_from_name(kWidgetType);
    if (widget == 0 || !g_type_is_a(widget, GTK_TYPE_WIDGET)) return kWidgetType;
    const GParamSpec* const source = propertyOf(widget, "source");
    const GType option = g_type_from_name(kOptionType);
    if (source == nullptr || option == 0 || source->value_type != option) return "its source";
    const GParamSpec* const value = propertyOf(option, "value");
    if (value == nullptr || value->value_type != G_TYPE_STRING) return "an option's value";
    if (g_signal_lookup("changed", option) == 0) return "an option's signal";
    GTypeQuery query{};
    g_type_query(option, &query);
    if (query.instance_size != sizeof(OptionLayout) || gtk_printer_option_new == nullptr)
        return "an option's fields";
    const GObjectRef<GObject> probe(gtk_printer_option_new(kOptionType, "", 0));
    return nameOf(probe.get()) == kOptionType ? "" : "an option's name";
}

bool DialogOptions::namesOptionsOf(GtkPrinter* printer) {
    GtkPrintBackend* const backEnd = gtk_printer_get_backend(printer);
    return backEnd != nullptr && std::strcmp(G_OBJECT_TYPE_NAME(backEnd), "GtkPrintBackendCups") == 0;
}

DialogOptions::DialogOptions(GtkPrintUnixDialog* dialog, ChangeHandler handler)
    : handler_(std::move(handler)) {
    collect(GTK_WIDGET(dialog));
}

DialogOptions::~DialogOptions() = default;

void DialogOptions::collect(GtkWidget* widget) {
    if (std::strcmp(G_OBJECT_TYPE_NAME(widget), kWidgetType) == 0) {
        GObject* source = nullptr;
        g_object_get(widget, "source", &source, nullptr);
        if (source == nullptr) return;
        const GObjectRef<GObject> owner(source);
        adopt(source);
    } else {
        forEachChild(widget, [this](GtkWidget* child) { collect(child); });
    }
}

void DialogOptions::adopt(GObject* option) {
    if (std::strcmp(G_OBJECT_TYPE_NAME(option), kOptionType) != 0) return;
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
