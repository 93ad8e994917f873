#include "Tests/PrintDialog/Gtk/Application.h"

#include "Tests/PrintDialog/Gtk/Widgets.h"

#include <algorithm>
#include <fstream>

namespace orvan::test {
namespace {

GtkNotebook* notebookOf(GtkPrintUnixDialog* dialog) {
    return firstOf<GtkNotebook>(
        GTK_WIDGET(dialog), [](GtkWidget* widget) { return GTK_IS_NOTEBOOK(widget); });
}

} // namespace

bool waitUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(5);
    // Wakes the loop, which sleeps while nothing happens in it.
    const guint wake = g_timeout_add(
        10, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    bool holds = condition();
    while (!holds && std::chrono::steady_clock::now() < end) {
        g_main_context_iteration(nullptr, TRUE);
        holds = condition();
    }
    g_source_remove(wake);
    return holds;
}

void letPass(std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    waitUntil([end] {
        return std::chrono::steady_clock::now() >= end && g_main_context_pending(nullptr) == FALSE;
    });
}

std::chrono::steady_clock::duration longestTurn(std::chrono::milliseconds time) {
    std::chrono::steady_clock::duration longest{};
    auto last = std::chrono::steady_clock::now();
    const auto end = last + time;
    waitUntil([&] {
        const auto now = std::chrono::steady_clock::now();
        longest = std::max(longest, now - last);
        last = now;
        return now > end;
    });
    return longest;
}

OpenDialog::OpenDialog(const Settings& remembered)
    : dialog_(GTK_PRINT_UNIX_DIALOG(gtk_print_unix_dialog_new("Print", nullptr))) {
    gtk_print_unix_dialog_set_manual_capabilities(dialog_, GTK_PRINT_CAPABILITY_GENERATE_PDF);
    GtkPrintSettings* const settings = gtk_print_settings_new();
    for (const auto& [key, value] : remembered)
        gtk_print_settings_set(settings, key.c_str(), value.c_str());
    gtk_print_unix_dialog_set_settings(dialog_, settings);
    g_object_unref(settings);
    gtk_window_present(GTK_WINDOW(dialog_));
    // GTK 4.8 leaves the remembered printer to the person.
    if (const auto printer = remembered.find("printer"); printer != remembered.end())
        selectPrinter(printer->second);
}

OpenDialog::~OpenDialog() {
    closeWindow(GTK_WINDOW(dialog_));
}

void OpenDialog::selectPrinter(const std::string& queue) const {
    EXPECT_TRUE(waitUntil([&] { return choosePrinter(dialog_, queue); })) << queue << " is not in the list";
    EXPECT_TRUE(waitUntil([&] { return selectedPrinter() == queue; })) << queue;
}

std::string OpenDialog::selectedPrinter() const {
    GtkPrinter* const printer = gtk_print_unix_dialog_get_selected_printer(dialog_);
    return printer != nullptr ? gtk_printer_get_name(printer) : "";
}

std::vector<std::string> OpenDialog::tabs() const {
    std::vector<std::string> names;
    GtkNotebook* const notebook = notebookOf(dialog_);
    for (int i = 0; i < gtk_notebook_get_n_pages(notebook); ++i) {
        GtkWidget* const page = gtk_notebook_get_nth_page(notebook, i);
        GtkWidget* const label = gtk_notebook_get_tab_label(notebook, page);
        if (gtk_widget_get_visible(page) && GTK_IS_LABEL(label))
            names.emplace_back(gtk_label_get_text(GTK_LABEL(label)));
    }
    return names;
}

bool OpenDialog::waitForTab(const std::string& name) {
    return waitUntil([&] {
        const auto names = tabs();
        return std::ranges::find(names, name) != names.end();
    });
}

void OpenDialog::openTab(const std::string& name) {
    GtkNotebook* const notebook = notebookOf(dialog_);
    for (int i = 0; i < gtk_notebook_get_n_pages(notebook); ++i) {
        GtkWidget* const label = gtk_notebook_get_tab_label(notebook, gtk_notebook_get_nth_page(notebook, i));
        if (GTK_IS_LABEL(label) && name == gtk_label_get_text(GTK_LABEL(label)))
            gtk_notebook_set_current_page(notebook, i);
    }
    EXPECT_TRUE(waitUntil([&] { return gtk_widget_get_mapped(frontPage()); }));
    GtkWidget* const front = gtk_notebook_get_tab_label(notebook, frontPage());
    EXPECT_EQ(gtk_label_get_text(GTK_LABEL(front)), name);
}

GtkWidget* OpenDialog::frontPage() const {
    GtkNotebook* const notebook = notebookOf(dialog_);
    return gtk_notebook_get_nth_page(notebook, gtk_notebook_get_current_page(notebook));
}

std::map<std::string, GtkWidget*> OpenDialog::popUps() const {
    std::map<std::string, GtkWidget*> popUps;
    forEach(frontPage(), [&](GtkWidget* widget) {
        if (!GTK_IS_LABEL(widget) || !gtk_widget_get_mapped(widget)) return;
        GtkWidget* const named = gtk_label_get_mnemonic_widget(GTK_LABEL(widget));
        auto* const popUp = named != nullptr ? firstOf<GtkWidget>(named, isPopUp) : nullptr;
        if (popUp != nullptr) popUps[gtk_label_get_text(GTK_LABEL(widget))] = popUp;
    });
    return popUps;
}

GtkWidget* OpenDialog::controlOf(const std::string& label) const {
    GtkWidget* found = nullptr;
    forEach(frontPage(), [&](GtkWidget* widget) {
        if (GTK_IS_LABEL(widget) && gtk_widget_get_mapped(widget) &&
            label == gtk_label_get_text(GTK_LABEL(widget)))
            found = gtk_label_get_mnemonic_widget(GTK_LABEL(widget));
    });
    return found;
}

std::vector<std::string> OpenDialog::choicesOf(const std::string& label) const {
    const auto all = popUps();
    return all.contains(label) ? entriesOf(all.at(label)) : std::vector<std::string>();
}

std::string OpenDialog::shownIn(const std::string& label) const {
    const auto all = popUps();
    if (!all.contains(label)) return "(no pop-up " + label + ")";
    const int active = shownEntry(all.at(label));
    return active < 0 ? "" : choicesOf(label).at(static_cast<std::size_t>(active));
}

void OpenDialog::pick(const std::string& label, const std::string& choice) {
    const auto choices = choicesOf(label);
    const auto found = std::ranges::find(choices, choice);
    ASSERT_NE(found, choices.end()) << label << " has no " << choice;
    pickEntry(popUps().at(label), static_cast<int>(found - choices.begin()));
}

bool OpenDialog::press(const std::string& text) const {
    GtkWidget* found = nullptr;
    forEach(frontPage(), [&](GtkWidget* widget) {
        if (GTK_IS_BUTTON(widget) && gtk_widget_get_mapped(widget) && titleOf(widget) == text) found = widget;
    });
    if (found != nullptr) click(found);
    return found != nullptr;
}

void OpenDialog::type(const std::string& text) const {
    auto* const entry = firstOf<GtkWidget>(
        frontPage(), [](GtkWidget* widget) { return GTK_IS_ENTRY(widget) && gtk_widget_get_mapped(widget); });
    ASSERT_NE(entry, nullptr);
    writeInto(entry, text);
}

void OpenDialog::unfold() const {
    const auto details = [this] {
        return firstOf<GtkExpander>(frontPage(), [](GtkWidget* widget) { return GTK_IS_EXPANDER(widget); });
    };
    ASSERT_TRUE(waitUntil([&] { return details() != nullptr; }));
    gtk_expander_set_expanded(details(), TRUE);
}

bool OpenDialog::says(const std::string& text) const {
    bool found = false;
    forEach(frontPage(), [&](GtkWidget* widget) {
        if (GTK_IS_LABEL(widget) && gtk_widget_get_mapped(widget) &&
            std::string(gtk_label_get_text(GTK_LABEL(widget))).find(text) != std::string::npos)
            found = true;
    });
    return found;
}

void OpenDialog::keepPicture(const std::string& name) const {
    const char* const folder = std::getenv("ORVAN_PICTURES");
    if (folder == nullptr) return;
    letPass(std::chrono::milliseconds(200));
    const auto [width, height] = sizeOf(GTK_WINDOW(dialog_));
    const std::string command = "import -window root -crop " + std::to_string(width) + "x" +
                                std::to_string(height) + "+0+0 +repage '" + folder + "/" + name + ".png'";
    EXPECT_EQ(std::system(command.c_str()), 0);
}

std::string OpenDialog::print(const std::filesystem::path& file) {
    gtk_dialog_response(GTK_DIALOG(dialog_), GTK_RESPONSE_OK);
    GtkPrinter* const printer = gtk_print_unix_dialog_get_selected_printer(dialog_);
    GtkPrintSettings* const settings = gtk_print_unix_dialog_get_settings(dialog_);
    GtkPrintJob* const job =
        gtk_print_job_new("test", printer, settings, gtk_print_unix_dialog_get_page_setup(dialog_));
    gtk_widget_set_visible(GTK_WIDGET(dialog_), FALSE);
    struct Answer {
        bool arrived = false;
        std::string problem;
    } answer;
    EXPECT_TRUE(gtk_print_job_set_source_file(job, file.c_str(), nullptr));
    gtk_print_job_send(
        job,
        [](GtkPrintJob*, gpointer data, const GError* error) {
            static_cast<Answer*>(data)->arrived = true;
            if (error != nullptr) static_cast<Answer*>(data)->problem = error->message;
        },
        &answer, nullptr);
    EXPECT_TRUE(waitUntil([&] { return answer.arrived; }));
    g_object_unref(job);
    g_object_unref(settings);
    return answer.problem;
}

void DialogTest::start(const PrintingSystemOptions& options) {
    desktop_ = Desktop::start(options);
    if (!desktop_.skipReason.empty()) GTEST_SKIP() << desktop_.skipReason;
    document_ = desktop_.printing->folder().home() / "document.ps";
    std::ofstream(document_) << "%!PS-Adobe-3.0\n%%Pages: 1\n%%Page: 1 1\nshowpage\n%%EOF\n";
}

void DialogTest::inApplication(const std::function<void()>& body, const std::vector<std::string>& environment,
    const std::filesystem::path& module) const {
    EXPECT_TRUE(desktop_.runApplication(
        environment,
        [&body] {
            ASSERT_TRUE(startToolkit());
            body();
            EXPECT_EQ(gtkComplaints(), std::vector<std::string>());
            const auto lines = systemLogLines();
            EXPECT_EQ(std::ranges::count(lines, "orvan: initWithCallback: paper options"),
                std::ranges::count(lines, "orvan: paper options plugin dealloc"));
        },
        module));
}

std::vector<PrintJob> DialogTest::jobs(const std::string& queue) const {
    std::vector<PrintJob> all;
    EXPECT_EQ(desktop_.printing->jobs(queue, &all), std::nullopt);
    return all;
}

} // namespace orvan::test
