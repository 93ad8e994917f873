#include "Tests/PrintDialog/Gtk3/Application.h"

#include <algorithm>
#include <fstream>

namespace orvan::test {
namespace {

void forEach(GtkWidget* widget, const std::function<void(GtkWidget*)>& visit) {
    visit(widget);
    if (!GTK_IS_CONTAINER(widget)) return;
    const auto descend = [](GtkWidget* child, gpointer data) {
        forEach(child, *static_cast<const std::function<void(GtkWidget*)>*>(data));
    };
    gtk_container_forall(
        GTK_CONTAINER(widget), descend, const_cast<std::function<void(GtkWidget*)>*>(&visit));
}

template <class T>
T* firstOf(GtkWidget* root, GType type) {
    T* found = nullptr;
    forEach(root, [&](GtkWidget* widget) {
        if (found == nullptr && G_TYPE_CHECK_INSTANCE_TYPE(widget, type))
            found = reinterpret_cast<T*>(widget);
    });
    return found;
}

GtkNotebook* notebookOf(GtkPrintUnixDialog* dialog) {
    return firstOf<GtkNotebook>(GTK_WIDGET(dialog), GTK_TYPE_NOTEBOOK);
}

// A row's text: that of the first column of text that shows something.
std::string textAt(GtkTreeModel* model, GtkTreeIter* row) {
    for (int column = 0; column < gtk_tree_model_get_n_columns(model); ++column) {
        if (gtk_tree_model_get_column_type(model, column) != G_TYPE_STRING) continue;
        char* text = nullptr;
        gtk_tree_model_get(model, row, column, &text, -1);
        std::string copy = text != nullptr ? text : "";
        g_free(text);
        if (!copy.empty()) return copy;
    }
    return {};
}

std::vector<std::string> rowsOf(GtkTreeModel* model) {
    std::vector<std::string> rows;
    GtkTreeIter row;
    if (model == nullptr) return rows;
    for (gboolean more = gtk_tree_model_get_iter_first(model, &row); more;
         more = gtk_tree_model_iter_next(model, &row))
        rows.push_back(textAt(model, &row));
    return rows;
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
    waitUntil([end] { return std::chrono::steady_clock::now() >= end && !gtk_events_pending(); });
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
    gtk_widget_show(GTK_WIDGET(dialog_));
    if (const auto printer = remembered.find("printer"); printer != remembered.end()) {
        EXPECT_TRUE(waitUntil([&] { return selectedPrinter() == printer->second; })) << printer->second;
    }
}

OpenDialog::~OpenDialog() {
    gtk_widget_destroy(GTK_WIDGET(dialog_));
}

void OpenDialog::selectPrinter(const std::string& queue) {
    auto* const list = firstOf<GtkTreeView>(GTK_WIDGET(dialog_), GTK_TYPE_TREE_VIEW);
    GtkTreeModel* const model = gtk_tree_view_get_model(list);
    std::vector<std::string> rows;
    EXPECT_TRUE(waitUntil([&] {
        rows = rowsOf(model);
        return std::ranges::find(rows, queue) != rows.end();
    })) << queue
        << " is not in the list";
    GtkTreePath* const path =
        gtk_tree_path_new_from_indices(static_cast<int>(std::ranges::find(rows, queue) - rows.begin()), -1);
    gtk_tree_view_set_cursor(list, path, nullptr, FALSE);
    gtk_tree_path_free(path);
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

std::map<std::string, GtkComboBox*> OpenDialog::popUps() const {
    std::map<std::string, GtkComboBox*> popUps;
    forEach(frontPage(), [&](GtkWidget* widget) {
        if (!GTK_IS_LABEL(widget) || !gtk_widget_get_mapped(widget)) return;
        GtkWidget* const named = gtk_label_get_mnemonic_widget(GTK_LABEL(widget));
        auto* const combo = named != nullptr ? firstOf<GtkComboBox>(named, GTK_TYPE_COMBO_BOX) : nullptr;
        if (combo != nullptr) popUps[gtk_label_get_text(GTK_LABEL(widget))] = combo;
    });
    return popUps;
}

GtkMenuButton* OpenDialog::longMenuOf(const std::string& label) const {
    GtkMenuButton* found = nullptr;
    forEach(frontPage(), [&](GtkWidget* widget) {
        if (!GTK_IS_LABEL(widget) || !gtk_widget_get_mapped(widget)) return;
        GtkWidget* const named = gtk_label_get_mnemonic_widget(GTK_LABEL(widget));
        if (GTK_IS_MENU_BUTTON(named) && label == gtk_label_get_text(GTK_LABEL(widget)))
            found = GTK_MENU_BUTTON(named);
    });
    return found;
}

std::vector<std::string> OpenDialog::choicesOf(const std::string& label) const {
    const auto all = popUps();
    return all.contains(label) ? rowsOf(gtk_combo_box_get_model(all.at(label))) : std::vector<std::string>();
}

std::string OpenDialog::shownIn(const std::string& label) const {
    const auto all = popUps();
    if (!all.contains(label)) return "(no pop-up " + label + ")";
    const int active = gtk_combo_box_get_active(all.at(label));
    return active < 0 ? "" : choicesOf(label).at(static_cast<std::size_t>(active));
}

void OpenDialog::pick(const std::string& label, const std::string& choice) {
    const auto choices = choicesOf(label);
    const auto found = std::ranges::find(choices, choice);
    ASSERT_NE(found, choices.end()) << label << " has no " << choice;
    gtk_combo_box_set_active(popUps().at(label), static_cast<int>(found - choices.begin()));
}

bool OpenDialog::press(const std::string& text) const {
    GtkButton* found = nullptr;
    forEach(frontPage(), [&](GtkWidget* widget) {
        if (!GTK_IS_BUTTON(widget) || !gtk_widget_get_mapped(widget)) return;
        const char* const name = atk_object_get_name(gtk_widget_get_accessible(widget));
        if (name != nullptr && text == name) found = GTK_BUTTON(widget);
    });
    if (found != nullptr) gtk_button_clicked(found);
    return found != nullptr;
}

void OpenDialog::type(const std::string& text) const {
    GtkEntry* found = nullptr;
    forEach(frontPage(), [&found](GtkWidget* widget) {
        if (GTK_IS_ENTRY(widget) && gtk_widget_get_mapped(widget)) found = GTK_ENTRY(widget);
    });
    ASSERT_NE(found, nullptr);
    gtk_entry_set_text(found, text.c_str());
}

void OpenDialog::unfold() const {
    const auto details = [this] { return firstOf<GtkExpander>(frontPage(), GTK_TYPE_EXPANDER); };
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
    GdkWindow* const window = gtk_widget_get_window(GTK_WIDGET(dialog_));
    GdkPixbuf* const picture =
        gdk_pixbuf_get_from_window(window, 0, 0, gdk_window_get_width(window), gdk_window_get_height(window));
    const std::string file = std::string(folder) + "/" + name + ".png";
    EXPECT_TRUE(gdk_pixbuf_save(picture, file.c_str(), "png", nullptr, nullptr)) << file;
    g_object_unref(picture);
}

std::string OpenDialog::print(const std::filesystem::path& file) {
    gtk_dialog_response(GTK_DIALOG(dialog_), GTK_RESPONSE_OK);
    GtkPrinter* const printer = gtk_print_unix_dialog_get_selected_printer(dialog_);
    GtkPrintSettings* const settings = gtk_print_unix_dialog_get_settings(dialog_);
    GtkPrintJob* const job =
        gtk_print_job_new("test", printer, settings, gtk_print_unix_dialog_get_page_setup(dialog_));
    gtk_widget_hide(GTK_WIDGET(dialog_));
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
            ASSERT_TRUE(gtk_init_check(nullptr, nullptr));
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
