#include "PrintDialog/Gtk/DialogAttachment.h"

#include "PrintDialog/Gtk/Guarded.h"
#include "PrintDialog/Gtk/Widgets.h"

#include <cctype>
#include <functional>
#include <utility>

namespace orvan {
namespace {

constexpr const char* kDataKey = "orvan-paper-options";
constexpr unsigned kLastASCII = 0x7F;

void forEachLabel(GtkWidget* widget, const std::function<void(GtkLabel*)>& visit) {
    if (GTK_IS_LABEL(widget)) visit(GTK_LABEL(widget));
    forEachChild(widget, [&visit](GtkWidget* child) { forEachLabel(child, visit); });
}

} // namespace

void DialogAttachment::attach(GtkPrintUnixDialog* dialog, std::optional<std::string> preset) {
    if (g_object_get_data(G_OBJECT(dialog), kDataKey) != nullptr) return;
    std::unique_ptr<DialogAttachment> attachment(new DialogAttachment(dialog));
    attachment->tab_ = DialogTab::create(*attachment, std::move(preset));
    if (attachment->tab_ == nullptr) return;
    // "destroy" comes while the dialog's widgets are still there; it can come more than once.
    const auto onDestroy = [](GtkPrintUnixDialog* self, gpointer) {
        guarded(
            [self] { delete static_cast<DialogAttachment*>(g_object_steal_data(G_OBJECT(self), kDataKey)); });
    };
    g_signal_connect(dialog, "destroy", G_CALLBACK(+onDestroy), nullptr);
    g_object_set_data(G_OBJECT(dialog), kDataKey, attachment.get());
    attachment.release()->printerSelected();
}

DialogAttachment* DialogAttachment::of(GtkPrintUnixDialog* dialog) {
    return static_cast<DialogAttachment*>(g_object_get_data(G_OBJECT(dialog), kDataKey));
}

DialogAttachment::DialogAttachment(GtkPrintUnixDialog* dialog)
    : dialog_(dialog),
      page_(dialog, [this] { tab_->tabShown(); }),
      printerConnection_(dialog, "notify::selected-printer",
          G_CALLBACK(+[](GObject*, GParamSpec*, gpointer self) {
              guarded([self] { static_cast<DialogAttachment*>(self)->printerSelected(); });
          }),
          this),
      pageSetupConnection_(dialog, "notify::page-setup",
          G_CALLBACK(+[](GObject*, GParamSpec*, gpointer self) {
              guarded([self] { static_cast<DialogAttachment*>(self)->tab_->paperChanged(); });
          }),
          this) {}

DialogAttachment::~DialogAttachment() {
    tab_.reset();
}

void DialogAttachment::printerSelected() {
    GtkPrinter* const printer = gtk_print_unix_dialog_get_selected_printer(dialog_);
    const bool hasQueue = printer != nullptr && gtk_printer_is_virtual(printer) == FALSE &&
                          DialogOptions::namesOptionsOf(printer);
    tab_->printerSelected(hasQueue ? gtk_printer_get_name(printer) : "");
}

void DialogAttachment::accepted() {
    tab_->accepted();
    AcceptedDialog dialog;
    dialog.queue = tab_->queue();
    const GObjectRef<GtkPrintSettings> settings(gtk_print_unix_dialog_get_settings(dialog_));
    for (auto& [keyword, marked] : tab_->marked()) {
        const char* const gtkValue = gtk_print_settings_get(settings.get(), ("cups-" + keyword).c_str());
        dialog.choices.emplace(keyword,
            AcceptedDialog::Choice{marked.choice, marked.isDefault, gtkValue != nullptr ? gtkValue : ""});
    }
    AcceptedChoices::shared().add(std::move(dialog), gtk_print_unix_dialog_get_page_setup(dialog_));
}

void DialogAttachment::showTab(const std::string& title, std::shared_ptr<platform::View> tree) {
    page_.appear(title, tree);
}

void DialogAttachment::treeChanged() {
    if (page_.mirror() != nullptr) page_.mirror()->refresh();
}

bool DialogAttachment::isBusy() const {
    bool isOpen = false;
    if (page_.mirror() != nullptr)
        page_.mirror()->visit([&isOpen](const ViewMirror& mirror) { isOpen = isOpen || mirror.isOpen(); });
    return isOpen || isButtonHeld(GTK_WIDGET(dialog_));
}

const platform::View* DialogAttachment::focusedView() const {
    GtkWidget* const focus = gtk_window_get_focus(GTK_WINDOW(dialog_));
    const platform::View* found = nullptr;
    if (focus == nullptr || page_.mirror() == nullptr) return nullptr;
    page_.mirror()->visit([&](const ViewMirror& mirror) {
        GtkWidget* const control = mirror.control();
        if (control != nullptr && (focus == control || gtk_widget_is_ancestor(focus, control) != FALSE))
            found = &mirror.view();
    });
    return found;
}

void DialogAttachment::focus(const platform::View& view) {
    if (page_.mirror() == nullptr) return;
    page_.mirror()->visit([&view](const ViewMirror& mirror) {
        if (&mirror.view() == &view && mirror.control() != nullptr) gtk_widget_grab_focus(mirror.control());
    });
}

std::string DialogAttachment::takenLetters() const {
    std::string letters;
    forEachLabel(GTK_WIDGET(dialog_), [&](GtkLabel* label) {
        const guint key = gdk_keyval_to_lower(gtk_label_get_mnemonic_keyval(label));
        if (key <= kLastASCII && gtk_widget_get_mapped(GTK_WIDGET(label)) != FALSE &&
            !page_.isIn(GTK_WIDGET(label)))
            letters += static_cast<char>(key);
    });
    return letters;
}

void DialogAttachment::openOptions() {
    options_ = std::make_unique<DialogOptions>(
        dialog_, [this](const std::string& keyword, const std::string& choice) {
            tab_->optionChanged(keyword, choice);
        });
}

std::map<std::string, std::string> DialogAttachment::optionValues() const {
    return options_->values();
}

void DialogAttachment::writeOption(const std::string& keyword, const std::string& choice) {
    // A choice that GTK does not know must not leave another one in its place.
    if (!options_->write(keyword, choice)) options_->write(keyword, std::string(kAsPrinterIsSet));
}

std::optional<PaperSize> DialogAttachment::paper() const {
    GtkPageSetup* const setup = gtk_print_unix_dialog_get_page_setup(dialog_);
    if (setup == nullptr) return std::nullopt;
    GtkPaperSize* const paper = gtk_page_setup_get_paper_size(setup);
    return PaperSize{
        gtk_paper_size_get_width(paper, GTK_UNIT_POINTS), gtk_paper_size_get_height(paper, GTK_UNIT_POINTS)};
}

// The dialog's own pop-up of papers is brought up to date only when it is made for another kind of
// application.
bool DialogAttachment::setPaper(
    const std::string& pageSize, const std::string& title, const PaperSize& size) {
    if (gtk_print_unix_dialog_get_embed_page_setup(dialog_) == FALSE) return false;
    GtkPageSetup* const old = gtk_print_unix_dialog_get_page_setup(dialog_);
    const GObjectRef<GtkPageSetup> setup(old != nullptr ? gtk_page_setup_copy(old) : gtk_page_setup_new());
    GtkPaperSize* const paper =
        gtk_paper_size_new_from_ppd(pageSize.c_str(), title.c_str(), size.width, size.height);
    gtk_page_setup_set_paper_size_and_default_margins(setup.get(), paper);
    gtk_paper_size_free(paper);
    gtk_print_unix_dialog_set_page_setup(dialog_, setup.get());
    gtk_print_unix_dialog_set_embed_page_setup(dialog_, FALSE);
    gtk_print_unix_dialog_set_embed_page_setup(dialog_, TRUE);
    return true;
}

} // namespace orvan
