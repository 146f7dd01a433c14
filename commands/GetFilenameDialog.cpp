// The file panels of the Linux desktop. The toolkit behind them is started at the first panel and
// leaves nothing behind that the rest of the program could notice: not the locale, not the X error
// handlers, not the GL context.
#include "commands/GetFilenameDialog.h"

#include <GL/glx.h>
#include <gdk/gdkx.h>
#include <gtk/gtk.h>

#include <filesystem>
#include <memory>

#include "commands/frac_extension.h"
#include "compute/worker_pool.h"

namespace {

// Xlib's two process-wide error handlers.
struct ErrorHandlers {
    XErrorHandler error = nullptr;
    XIOErrorHandler ioError = nullptr;
};

ErrorHandlers exchange(const ErrorHandlers& handlers) {
    return {XSetErrorHandler(handlers.error), XSetIOErrorHandler(handlers.ioError)};
}

// The handlers that the toolkit installed. Written at its start, GLUT thread only.
ErrorHandlers panelHandlers;

// Lets the toolkit handle X errors while a panel is open and no longer.
class PanelErrorHandling {
  public:
    PanelErrorHandling() : previous(exchange(panelHandlers)) {}
    ~PanelErrorHandling() { exchange(previous); }
    PanelErrorHandling(const PanelErrorHandling&) = delete;
    PanelErrorHandling& operator=(const PanelErrorHandling&) = delete;

  private:
    ErrorHandlers previous;
};

// Starts the toolkit on the display that the GLUT window is on.
bool startToolkit() {
    gtk_disable_setlocale();
    gdk_set_allowed_backends("x11");
    std::string program = "tessary", option = "--display", display;
    if (Display* connection = glXGetCurrentDisplay()) display = DisplayString(connection);
    char* arguments[] = {program.data(), option.data(), display.data(), nullptr};
    char** argv = arguments;
    int argc = display.empty() ? 1 : 3;

    const ErrorHandlers before = exchange({});
    const bool started = gtk_init_check(&argc, &argv);
    panelHandlers = exchange(before);
    return started;
}

bool toolkitRuns() {
    static const bool started = startToolkit();
    return started;
}

// The GLUT window as the toolkit sees it; null where there is none.
GdkWindow* glutWindow() {
    const GLXDrawable drawable = glXGetCurrentDrawable();
    if (drawable == None) return nullptr;
    return gdk_x11_window_foreign_new_for_display(gdk_display_get_default(), drawable);
}

void attachToGlutWindow(GtkWidget* dialog, gpointer) {
    GdkWindow* parent = glutWindow();
    if (parent == nullptr) return;
    gdk_window_set_transient_for(gtk_widget_get_window(dialog), parent);
    g_object_unref(parent);
}

// A signal that ends the program also ends the panel it waits for.
gboolean cancelAtShutdown(gpointer dialog) {
    if (shutdown_threads) gtk_dialog_response(GTK_DIALOG(dialog), GTK_RESPONSE_CANCEL);
    return G_SOURCE_CONTINUE;
}

int runDialog(GtkDialog* dialog) {
    constexpr guint CHECK_MILLISECONDS = 100;
    const guint check = g_timeout_add(CHECK_MILLISECONDS, cancelAtShutdown, dialog);
    const int response = gtk_dialog_run(dialog);
    g_source_remove(check);
    return response;
}

void addFilter(GtkFileChooser* chooser, const char* name,
               std::initializer_list<const char*> patterns) {
    GtkFileFilter* filter = gtk_file_filter_new();
    gtk_file_filter_set_name(filter, name);
    for (const char* pattern : patterns) gtk_file_filter_add_pattern(filter, pattern);
    gtk_file_chooser_add_filter(chooser, filter);
}

// One panel, from its making to its disappearance from the screen.
class Panel {
  public:
    Panel(GtkFileChooserAction action, const std::string& message, const char* accept)
        : dialog(gtk_file_chooser_dialog_new(message.c_str(), nullptr, action, "_Cancel",
                                             GTK_RESPONSE_CANCEL, accept, GTK_RESPONSE_ACCEPT,
                                             nullptr)) {
        g_signal_connect(dialog, "realize", G_CALLBACK(attachToGlutWindow), nullptr);
        gtk_dialog_set_default_response(GTK_DIALOG(dialog), GTK_RESPONSE_ACCEPT);
        addFilter(chooser(), "Fractals (*.frac)", {"*.frac", "*.FRAC"});
        addFilter(chooser(), "All files", {"*"});
    }
    ~Panel() {
        gtk_widget_destroy(dialog);
        while (gtk_events_pending()) gtk_main_iteration();
    }
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

    GtkFileChooser* chooser() { return GTK_FILE_CHOOSER(dialog); }

    // Without a folder of its own the panel opens on recent files, where no path can be typed.
    void startIn(const std::filesystem::path& folder) {
        std::error_code error;
        const std::filesystem::path start =
            folder.empty() ? std::filesystem::current_path(error) : folder;
        gtk_file_chooser_set_current_folder(chooser(), start.c_str());
    }

    // The path chosen, empty when the panel was left in any other way.
    std::string run() {
        if (runDialog(GTK_DIALOG(dialog)) != GTK_RESPONSE_ACCEPT) return {};
        const std::unique_ptr<char, decltype(&g_free)> name(
            gtk_file_chooser_get_filename(chooser()), g_free);
        return name ? name.get() : "";
    }

    bool agreesToReplace(const std::string& path) {
        const std::unique_ptr<char, decltype(&g_free)> shown(
            g_filename_display_basename(path.c_str()), g_free);
        GtkWidget* question = gtk_message_dialog_new(
            GTK_WINDOW(dialog), GTK_DIALOG_MODAL, GTK_MESSAGE_QUESTION, GTK_BUTTONS_NONE,
            "A file named \u201c%s\u201d already exists. Do you want to replace it?", shown.get());
        gtk_dialog_add_buttons(GTK_DIALOG(question), "_Cancel", GTK_RESPONSE_CANCEL, "_Replace",
                               GTK_RESPONSE_ACCEPT, nullptr);
        gtk_dialog_set_default_response(GTK_DIALOG(question), GTK_RESPONSE_CANCEL);
        const int response = runDialog(GTK_DIALOG(question));
        gtk_widget_destroy(question);
        return response == GTK_RESPONSE_ACCEPT;
    }

  private:
    GtkWidget* dialog;
};

bool exists(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

void proposeName(Panel& panel, const std::filesystem::path& path) {
    panel.startIn(path.parent_path());
    const std::unique_ptr<char, decltype(&g_free)> name(
        g_filename_display_basename(path.filename().c_str()), g_free);
    if (!path.filename().empty()) gtk_file_chooser_set_current_name(panel.chooser(), name.get());
    gtk_file_chooser_set_do_overwrite_confirmation(panel.chooser(), TRUE);
}

}  // namespace

bool GetOpenFilename(std::string& path, std::string message) {
    if (!toolkitRuns()) return false;
    const PanelErrorHandling handling;
    Panel panel(GTK_FILE_CHOOSER_ACTION_OPEN, message, "_Open");
    panel.startIn(std::filesystem::path(path).parent_path());
    const std::string chosen = panel.run();
    if (chosen.empty()) return false;
    path = chosen;
    applyFracExtension(path);
    return true;
}

bool GetSaveFilename(std::string& path, std::string message) {
    if (!toolkitRuns()) return false;
    const PanelErrorHandling handling;
    Panel panel(GTK_FILE_CHOOSER_ACTION_SAVE, message, "_Save");
    proposeName(panel, path);
    while (true) {
        const std::string chosen = panel.run();
        if (chosen.empty()) return false;
        std::string extended = chosen;
        applyFracExtension(extended);
        // The panel asked about the name as typed; the extension may lead to another file.
        if (extended != chosen && exists(extended) && !panel.agreesToReplace(extended)) continue;
        path = extended;
        return true;
    }
}
