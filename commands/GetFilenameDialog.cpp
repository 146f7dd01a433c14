// The file panels of the Linux desktop. The toolkit behind them is loaded and started at the first
// panel, because linking it would cost every start of the program a tenth of its time; and it
// leaves nothing behind that the rest of the program could notice: not the locale, not the X error
// handlers, not the GL context, not what a closed pipe does.
#include "commands/GetFilenameDialog.h"

#include <GL/glx.h>
#include <dlfcn.h>
#define G_DISABLE_CAST_CHECKS  // checked casts would call into the toolkit
#include <gdk/gdkx.h>
#include <gtk/gtk.h>
#include <signal.h>

#include <filesystem>
#include <iostream>
#include <memory>
#include <vector>

#include "backends/worker_pool.h"
#include "explorer/installed_catalogues.h"
#include "explorer/platform_x11.h"
#include "explorer/printed_name.h"
#include "explorer/window_title.h"
#include "frac/frac_extension.h"

namespace {

// What is used of the toolkit: each name becomes a member of that name and type.
#define TESSARY_TOOLKIT_FUNCTIONS(USE)          \
    USE(g_filename_display_basename)            \
    USE(g_free)                                 \
    USE(g_list_free)                            \
    USE(g_object_ref)                           \
    USE(g_object_unref)                         \
    USE(g_signal_connect_data)                  \
    USE(g_socket_get_type)                      \
    USE(g_source_remove)                        \
    USE(g_timeout_add)                          \
    USE(g_type_check_instance_is_a)             \
    USE(g_type_class_ref)                       \
    USE(gdk_display_flush)                      \
    USE(gdk_display_get_default)                \
    USE(gdk_set_allowed_backends)               \
    USE(gdk_window_set_transient_for)           \
    USE(gdk_x11_window_foreign_new_for_display) \
    USE(gtk_dialog_add_buttons)                 \
    USE(gtk_dialog_get_type)                    \
    USE(gtk_dialog_response)                    \
    USE(gtk_dialog_run)                         \
    USE(gtk_dialog_set_default_response)        \
    USE(gtk_disable_setlocale)                  \
    USE(gtk_events_pending)                     \
    USE(gtk_file_chooser_add_filter)            \
    USE(gtk_file_chooser_add_shortcut_folder)   \
    USE(gtk_file_chooser_dialog_new)            \
    USE(gtk_file_chooser_get_filename)          \
    USE(gtk_file_chooser_set_current_folder)    \
    USE(gtk_file_chooser_set_current_name)      \
    USE(gtk_file_filter_add_pattern)            \
    USE(gtk_file_filter_new)                    \
    USE(gtk_file_filter_set_name)               \
    USE(gtk_init_check)                         \
    USE(gtk_main_iteration)                     \
    USE(gtk_message_dialog_new)                 \
    USE(gtk_widget_destroy)                     \
    USE(gtk_widget_get_window)                  \
    USE(gtk_window_list_toplevels)              \
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

// The handler of X errors that the toolkit installed. Written at its start, GLUT thread only.
XErrorHandler panelErrorHandler = nullptr;

// Lets the toolkit handle X errors while a panel is open and no longer. A lost display stays
// Xlib's, which tells of it, as the toolkit does not.
class PanelErrorHandling {
  public:
    PanelErrorHandling() : previous(XSetErrorHandler(panelErrorHandler)) {}
    ~PanelErrorHandling() { XSetErrorHandler(previous); }
    PanelErrorHandling(const PanelErrorHandling&) = delete;
    PanelErrorHandling& operator=(const PanelErrorHandling&) = delete;

  private:
    XErrorHandler previous;
};

// Keeps what a closed pipe does as it was: libraries behind the toolkit have it ignored from their
// first use on.
class KeptPipeSignal {
  public:
    KeptPipeSignal() { sigaction(SIGPIPE, nullptr, &before); }
    ~KeptPipeSignal() { sigaction(SIGPIPE, &before, nullptr); }
    KeptPipeSignal(const KeptPipeSignal&) = delete;
    KeptPipeSignal& operator=(const KeptPipeSignal&) = delete;

  private:
    struct sigaction before = {};
};

// One of these libraries may be used first by a thread that outlives a panel, so that is done here.
void useSocketsOnce() {
    toolkit.g_type_class_ref(toolkit.g_socket_get_type());
}

// Loads the toolkit and starts it on the display that the GLUT window is on; returns why it does
// not run, nothing when it does.
std::string startToolkit() {
    const KeptPipeSignal pipeSignal;
    std::string trouble = toolkit.load();
    if (!trouble.empty()) return trouble;
    useSocketsOnce();
    toolkit.gtk_disable_setlocale();
    toolkit.gdk_set_allowed_backends("x11");
    std::string program = "tessary", option = "--display", display;
    if (Display* connection = glXGetCurrentDisplay()) display = DisplayString(connection);
    char* arguments[] = {program.data(), option.data(), display.data(), nullptr};
    char** argv = arguments;
    int argc = display.empty() ? 1 : 3;

    const ErrorHandlers before = exchange({});
    const bool started = toolkit.gtk_init_check(&argc, &argv) != FALSE;
    panelErrorHandler = exchange(before).error;
    return started ? "" : "cannot open display " + display;
}

// Whether panels can be shown; a line tells when they cannot.
bool toolkitRuns() {
    static const std::string trouble = startToolkit();
    if (!trouble.empty())
        std::cout << "No file panel can be shown: " << printedName(trouble) << std::endl;
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

// Every dialog there is, also those that the toolkit asks something with; each has to be released.
std::vector<GtkWidget*> referencedDialogs() {
    std::vector<GtkWidget*> dialogs;
    GList* const windows = toolkit.gtk_window_list_toplevels();
    for (GList* window = windows; window != nullptr; window = window->next) {
        auto* instance = static_cast<GTypeInstance*>(window->data);
        if (!toolkit.g_type_check_instance_is_a(instance, toolkit.gtk_dialog_get_type())) continue;
        (toolkit.g_object_ref)(window->data);  // not the macro of that name
        dialogs.push_back(static_cast<GtkWidget*>(window->data));
    }
    toolkit.g_list_free(windows);
    return dialogs;
}

// A signal that ends the program also ends the panel it waits for, and every question above it; so
// does the destruction of its window by another client.
gboolean cancelAtShutdown(gpointer) {
    if (!shutdown_threads && !windowIsGone()) return G_SOURCE_CONTINUE;
    for (GtkWidget* dialog : referencedDialogs()) {
        toolkit.gtk_dialog_response(GTK_DIALOG(dialog), GTK_RESPONSE_CANCEL);
        toolkit.g_object_unref(dialog);
    }
    return G_SOURCE_CONTINUE;
}

int runDialog(GtkDialog* dialog) {
    constexpr guint CHECK_MILLISECONDS = 100;
    const guint check = toolkit.g_timeout_add(CHECK_MILLISECONDS, cancelAtShutdown, nullptr);
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
        addFilter(chooser(), "Fractals (*.frac)", {"*.[Ff][Rr][Aa][Cc]"});
        addFilter(chooser(), "All files", {"*"});
        const std::string catalogues = installedCatalogues();
        if (!catalogues.empty())
            toolkit.gtk_file_chooser_add_shortcut_folder(chooser(), catalogues.c_str(), nullptr);
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

    // Opens in the folder of this file or, when that is gone, the nearest one above it. Without a
    // folder of its own the panel opens on recent files, where no path can be typed.
    void startBeside(const std::filesystem::path& file) {
        std::error_code error;
        const std::filesystem::path folder = file.parent_path();
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

    // Whether this file may be written: there is none yet, or the user agrees to replace it.
    bool mayWrite(const std::string& path) {
        std::error_code error;
        if (std::filesystem::is_directory(path, error)) {
            refuseFolder(path);
            return false;
        }
        return !std::filesystem::exists(path, error) || agreesToReplace(path);
    }

  private:
    bool agreesToReplace(const std::string& path) {
        GtkWidget* question = newMessage(GTK_MESSAGE_QUESTION, "Replace file", "file", path,
                                         "Do you want to replace it?");
        toolkit.gtk_dialog_add_buttons(GTK_DIALOG(question), "_Cancel", GTK_RESPONSE_CANCEL,
                                       "_Replace", GTK_RESPONSE_ACCEPT, nullptr);
        toolkit.gtk_dialog_set_default_response(GTK_DIALOG(question), GTK_RESPONSE_CANCEL);
        const int response = runDialog(GTK_DIALOG(question));
        toolkit.gtk_widget_destroy(question);
        return response == GTK_RESPONSE_ACCEPT;
    }

    void refuseFolder(const std::string& path) {
        GtkWidget* message = newMessage(GTK_MESSAGE_ERROR, "Folder in the way", "folder", path,
                                        "Please choose another name.");
        toolkit.gtk_dialog_add_buttons(GTK_DIALOG(message), "_OK", GTK_RESPONSE_ACCEPT, nullptr);
        runDialog(GTK_DIALOG(message));
        toolkit.gtk_widget_destroy(message);
    }

    // A message above the panel without buttons: what there is already at `path`, and the wish.
    GtkWidget* newMessage(GtkMessageType type, const char* title, const char* kind,
                          const std::string& path, const char* wish) {
        const Text name(toolkit.g_filename_display_basename(path.c_str()));
        GtkWidget* message = toolkit.gtk_message_dialog_new(
            GTK_WINDOW(dialog), GTK_DIALOG_MODAL, type, GTK_BUTTONS_NONE,
            "A %s named \u201c%s\u201d already exists. %s", kind, name.get(), wish);
        toolkit.gtk_window_set_title(GTK_WINDOW(message), title);
        return message;
    }

    GtkWidget* dialog;
};

void proposeName(Panel& panel, const std::filesystem::path& path) {
    panel.startBeside(path);
    const Text name(toolkit.g_filename_display_basename(path.filename().c_str()));
    if (!path.filename().empty())
        toolkit.gtk_file_chooser_set_current_name(panel.chooser(), name.get());
}

}  // namespace

bool GetOpenFilename(std::string& path, std::string message) {
    if (!toolkitRuns()) return false;
    const KeptPipeSignal pipeSignal;
    const PanelErrorHandling handling;
    Panel panel(GTK_FILE_CHOOSER_ACTION_OPEN, message, "_Open");
    panel.startBeside(path.empty() ? current_filename : path);
    const std::string chosen = panel.run();
    if (chosen.empty()) return false;
    path = chosen;
    applyFracExtension(path);
    return true;
}

bool GetSaveFilename(std::string& path, std::string message) {
    if (!toolkitRuns()) return false;
    const KeptPipeSignal pipeSignal;
    const PanelErrorHandling handling;
    Panel panel(GTK_FILE_CHOOSER_ACTION_SAVE, message, "_Save");
    proposeName(panel, path);
    // The toolkit would ask about the name as typed, which need not be the file that is written.
    while (true) {
        std::string chosen = panel.run();
        if (chosen.empty()) return false;
        applyFracExtension(chosen);
        if (!panel.mayWrite(chosen)) continue;
        path = chosen;
        return true;
    }
}
