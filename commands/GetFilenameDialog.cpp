// The file panels of the Linux desktop. The toolkit behind them is loaded and started at the first
// panel, because linking it would cost every start of the program a tenth of its time; and it
// leaves nothing behind that the rest of the program could notice: not the locale, not the X error
// handlers, not the GL context.
#include "commands/GetFilenameDialog.h"

#include <GL/glx.h>
#include <dlfcn.h>
#define G_DISABLE_CAST_CHECKS  // checked casts would call into the toolkit
#include <gdk/gdkx.h>
#include <gtk/gtk.h>

#include <filesystem>
#include <iostream>
#include <memory>

#include "backends/worker_pool.h"
#include "frac/frac_extension.h"

namespace {

// What is used of the toolkit: each name becomes a member of that name and type.
#define TESSARY_TOOLKIT_FUNCTIONS(USE)                  \
    USE(g_filename_display_basename)                    \
    USE(g_free)                                         \
    USE(g_object_unref)                                 \
    USE(g_signal_connect_data)                          \
    USE(g_source_remove)                                \
    USE(g_timeout_add)                                  \
    USE(gdk_display_flush)                              \
    USE(gdk_display_get_default)                        \
    USE(gdk_set_allowed_backends)                       \
    USE(gdk_window_set_transient_for)                   \
    USE(gdk_x11_window_foreign_new_for_display)         \
    USE(gtk_dialog_add_buttons)                         \
    USE(gtk_dialog_response)                            \
    USE(gtk_dialog_run)                                 \
    USE(gtk_dialog_set_default_response)                \
    USE(gtk_disable_setlocale)                          \
    USE(gtk_events_pending)                             \
    USE(gtk_file_chooser_add_filter)                    \
    USE(gtk_file_chooser_dialog_new)                    \
    USE(gtk_file_chooser_get_filename)                  \
    USE(gtk_file_chooser_set_current_folder)            \
    USE(gtk_file_chooser_set_current_name)              \
    USE(gtk_file_chooser_set_do_overwrite_confirmation) \
    USE(gtk_file_filter_add_pattern)                    \
    USE(gtk_file_filter_new)                            \
    USE(gtk_file_filter_set_name)                       \
    USE(gtk_init_check)                                 \
    USE(gtk_main_iteration)                             \
    USE(gtk_message_dialog_new)                         \
    USE(gtk_widget_destroy)                             \
    USE(gtk_widget_get_window)                          \
    USE(gtk_window_set_title)

class Toolkit {
  public:
    // Loads the library; returns why it cannot be used, nothing when it can.
    std::string load() {
        void* library = dlopen("libgtk-3.so.0", RTLD_LAZY | RTLD_LOCAL);
        return library != nullptr && findFunctions(library) ? "" : dlerror();
    }

// NOLINTNEXTLINE(bugprone-macro-parentheses): the name of a member cannot stand in parentheses
#define DECLARE(name) decltype(&::name) name = nullptr;
    TESSARY_TOOLKIT_FUNCTIONS(DECLARE)
#undef DECLARE

  private:
    template <class F>
    static bool find(void* library, const char* name, F& function) {
        function = reinterpret_cast<F>(dlsym(library, name));
        return function != nullptr;
    }

    bool findFunctions(void* library) {
        bool complete = true;
#define FIND(name) complete = complete && find(library, #name, name);
        TESSARY_TOOLKIT_FUNCTIONS(FIND)
#undef FIND
        return complete;
    }
};

// The loaded toolkit. Written at the first panel, GLUT thread only.
Toolkit toolkit;

struct FreeText {
    void operator()(char* text) const { toolkit.g_free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

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

// Loads the toolkit and starts it on the display that the GLUT window is on; returns why it does
// not run, nothing when it does.
std::string startToolkit() {
    std::string trouble = toolkit.load();
    if (!trouble.empty()) return trouble;
    toolkit.gtk_disable_setlocale();
    toolkit.gdk_set_allowed_backends("x11");
    std::string program = "tessary", option = "--display", display;
    if (Display* connection = glXGetCurrentDisplay()) display = DisplayString(connection);
    char* arguments[] = {program.data(), option.data(), display.data(), nullptr};
    char** argv = arguments;
    int argc = display.empty() ? 1 : 3;

    const ErrorHandlers before = exchange({});
    const bool started = toolkit.gtk_init_check(&argc, &argv) != FALSE;
    panelHandlers = exchange(before);
    return started ? "" : "cannot open display " + display;
}

// Whether panels can be shown; a line tells when they cannot.
bool toolkitRuns() {
    static const std::string trouble = startToolkit();
    if (!trouble.empty()) std::cout << "No file panel can be shown: " << trouble << std::endl;
    return trouble.empty();
}

// The GLUT window as the toolkit sees it; null where there is none.
GdkWindow* glutWindow() {
    const GLXDrawable drawable = glXGetCurrentDrawable();
    if (drawable == None) return nullptr;
    return toolkit.gdk_x11_window_foreign_new_for_display(toolkit.gdk_display_get_default(),
                                                          drawable);
}

void attachToGlutWindow(GtkWidget* dialog, gpointer) {
    GdkWindow* parent = glutWindow();
    if (parent == nullptr) return;
    toolkit.gdk_window_set_transient_for(toolkit.gtk_widget_get_window(dialog), parent);
    toolkit.g_object_unref(parent);
}

// A signal that ends the program also ends the panel it waits for.
gboolean cancelAtShutdown(gpointer dialog) {
    if (shutdown_threads) toolkit.gtk_dialog_response(GTK_DIALOG(dialog), GTK_RESPONSE_CANCEL);
    return G_SOURCE_CONTINUE;
}

int runDialog(GtkDialog* dialog) {
    constexpr guint CHECK_MILLISECONDS = 100;
    const guint check = toolkit.g_timeout_add(CHECK_MILLISECONDS, cancelAtShutdown, dialog);
    const int response = toolkit.gtk_dialog_run(dialog);
    toolkit.g_source_remove(check);
    return response;
}

void addFilter(GtkFileChooser* chooser, const char* name,
               std::initializer_list<const char*> patterns) {
    GtkFileFilter* filter = toolkit.gtk_file_filter_new();
    toolkit.gtk_file_filter_set_name(filter, name);
    for (const char* pattern : patterns) toolkit.gtk_file_filter_add_pattern(filter, pattern);
    toolkit.gtk_file_chooser_add_filter(chooser, filter);
}

// One panel, from its making to its disappearance from the screen.
class Panel {
  public:
    Panel(GtkFileChooserAction action, const std::string& message, const char* accept)
        : dialog(toolkit.gtk_file_chooser_dialog_new(message.c_str(), nullptr, action, "_Cancel",
                                                     GTK_RESPONSE_CANCEL, accept,
                                                     GTK_RESPONSE_ACCEPT, nullptr)) {
        toolkit.g_signal_connect_data(dialog, "realize", G_CALLBACK(attachToGlutWindow), nullptr,
                                      nullptr, GConnectFlags{});
        toolkit.gtk_dialog_set_default_response(GTK_DIALOG(dialog), GTK_RESPONSE_ACCEPT);
        addFilter(chooser(), "Fractals (*.frac)", {"*.frac", "*.FRAC"});
        addFilter(chooser(), "All files", {"*"});
    }
    ~Panel() {
        toolkit.gtk_widget_destroy(dialog);
        while (toolkit.gtk_events_pending()) toolkit.gtk_main_iteration();
        // What the toolkit has not sent by now would wait for the next panel, this one's
        // disappearance too.
        toolkit.gdk_display_flush(toolkit.gdk_display_get_default());
    }
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

    GtkFileChooser* chooser() { return GTK_FILE_CHOOSER(dialog); }

    // Without a folder of its own the panel opens on recent files, where no path can be typed.
    void startIn(const std::filesystem::path& folder) {
        std::error_code error;
        const std::filesystem::path start =
            folder.empty() ? std::filesystem::current_path(error) : folder;
        toolkit.gtk_file_chooser_set_current_folder(chooser(), start.c_str());
    }

    // The path chosen, empty when the panel was left in any other way.
    std::string run() {
        if (runDialog(GTK_DIALOG(dialog)) != GTK_RESPONSE_ACCEPT) return {};
        const Text name(toolkit.gtk_file_chooser_get_filename(chooser()));
        return name ? name.get() : "";
    }

    bool agreesToReplace(const std::string& path) {
        const Text shown(toolkit.g_filename_display_basename(path.c_str()));
        GtkWidget* question = toolkit.gtk_message_dialog_new(
            GTK_WINDOW(dialog), GTK_DIALOG_MODAL, GTK_MESSAGE_QUESTION, GTK_BUTTONS_NONE,
            "A file named \u201c%s\u201d already exists. Do you want to replace it?", shown.get());
        toolkit.gtk_window_set_title(GTK_WINDOW(question), "Replace file");
        toolkit.gtk_dialog_add_buttons(GTK_DIALOG(question), "_Cancel", GTK_RESPONSE_CANCEL,
                                       "_Replace", GTK_RESPONSE_ACCEPT, nullptr);
        toolkit.gtk_dialog_set_default_response(GTK_DIALOG(question), GTK_RESPONSE_CANCEL);
        const int response = runDialog(GTK_DIALOG(question));
        toolkit.gtk_widget_destroy(question);
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
    const Text name(toolkit.g_filename_display_basename(path.filename().c_str()));
    if (!path.filename().empty())
        toolkit.gtk_file_chooser_set_current_name(panel.chooser(), name.get());
    toolkit.gtk_file_chooser_set_do_overwrite_confirmation(panel.chooser(), TRUE);
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
