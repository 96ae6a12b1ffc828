#include "linux/webkit/popup/Popups.h"

#include "linux/gobject/GObjectPointer.h"
#include "linux/gobject/SignalHandler.h"
#include "linux/webkit/content/ViewPreparation.h"
#include "linux/webkit/content/WorkerNotifications.h"
#include "linux/webkit/dialogs/ScriptDialogs.h"
#include "linux/webkit/navigation/Downloads.h"
#include "linux/webkit/navigation/NavigationPolicy.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kelo::webkit {

namespace {

constexpr int smallestSize = 240;
constexpr int usualWidth = 640;
constexpr int usualHeight = 720;

struct Size {
    int width = 0;
    int height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

Size sizeOf(GtkWidget* widget) {
    return {gtk_widget_get_width(widget), gtk_widget_get_height(widget)};
}

const char* addressOf(WebKitNavigationAction* action) {
    const char* const address =
        webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    return address ? address : "";
}

/// A view and its window, which owns this.
class Popup {
public:
    Popup(WebKitWebView* opener, const PopupContext& context, std::string address)
        : context(context),
          address(std::move(address)),
          shown(context.service),
          view(makeView(opener)),
          downloads(webkit_web_view_get_network_session(view), view, shown),
          policy(shown, downloads, false, context.openExternally, [] {}),
          window(GTK_WINDOW(gtk_window_new())),
          dialogs(view, shown, context.dialogs,
                  {[] {}, [] {}, [] {}, [this] { gtk_window_destroy(window); }}) {
        connectAll();
        offerPopups(view, context);
        prepareView(view, context.service);
        buildWindow(opener);
    }

    WebKitWebView* nativeView() const { return view; }
    GtkWindow* nativeWindow() const { return window; }

private:
    static WebKitWebView* makeView(WebKitWebView* opener) {
        const auto settings = gobject::GObjectPointer<WebKitSettings>::adopt(webkit_settings_new());
        webkit_settings_set_user_agent(
            settings.get(), webkit_settings_get_user_agent(webkit_web_view_get_settings(opener)));
        withholdWorkerNotifications(settings.get());
        const auto content = gobject::GObjectPointer<WebKitUserContentManager>::adopt(
            webkit_user_content_manager_new());
        return WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "related-view", opener,
                                            "settings", settings.get(), "user-content-manager",
                                            content.get(), nullptr));
    }

    template <typename Function>
    void connect(const char* signal, Function* handler) {
        connections.push_back(gobject::connectSignal(view, signal, handler, this));
    }

    void connectAll() {
        connect("ready-to-show", readyToShow);
        connect("load-changed", loadChanged);
        connect(
            "permission-request",
            +[](WebKitWebView*, WebKitPermissionRequest* request, Popup*) -> gboolean {
                webkit_permission_request_deny(request);
                return TRUE;
            });
        // The engine would show it by itself.
        connect(
            "show-notification",
            +[](WebKitWebView*, WebKitNotification* notification, Popup*) -> gboolean {
                webkit_notification_close(notification);
                return TRUE;
            });
        connect(
            "decide-policy",
            +[](WebKitWebView* view, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                Popup* self) -> gboolean { return self->policy.decide(view, decision, type); });
    }

    void buildWindow(WebKitWebView* opener) {
        gtk_window_set_title(window, "Kelo");
        gtk_window_set_child(window, GTK_WIDGET(view));
        gtk_widget_add_css_class(GTK_WIDGET(window), "kelo-popup");
        if (GApplication* const application = g_application_get_default();
            GTK_IS_APPLICATION(application))
            gtk_window_set_application(window, GTK_APPLICATION(application));
        usualSizes.push_back(sizeOf(GTK_WIDGET(opener)));
        if (GtkRoot* const root = gtk_widget_get_root(GTK_WIDGET(opener)); GTK_IS_WINDOW(root)) {
            gtk_window_set_transient_for(window, GTK_WINDOW(root));
            usualSizes.push_back(sizeOf(GTK_WIDGET(root)));
            Size byDefault;
            gtk_window_get_default_size(GTK_WINDOW(root), &byDefault.width, &byDefault.height);
            usualSizes.push_back(byDefault);
        }
        g_signal_connect_object(opener, "destroy", G_CALLBACK(gtk_window_destroy), window,
                                G_CONNECT_SWAPPED);
        GtkEventController* const keys = gtk_event_controller_key_new();
        // What the page does not take comes to the window.
        const auto pressed =
            +[](GtkEventController*, guint key, guint, GdkModifierType, Popup* self) -> gboolean {
            if (key == GDK_KEY_Escape)
                self->close();
            return key == GDK_KEY_Escape;
        };
        g_signal_connect(keys, "key-pressed", G_CALLBACK(pressed), this);
        const auto closing = +[](GtkWindow*, Popup* self) -> gboolean {
            self->close();
            return TRUE;
        };
        g_signal_connect(window, "close-request", G_CALLBACK(closing), this);
        gtk_widget_add_controller(GTK_WIDGET(window), keys);
    }

    static void loadChanged(WebKitWebView* view, WebKitLoadEvent event, Popup* self) {
        if (event != WEBKIT_LOAD_COMMITTED)
            return;
        self->shown.committed(webkit_web_view_get_uri(view));
        self->downloads.pageChanged();
        const std::string host = self->shown.host();
        gtk_window_set_title(self->window, host.empty() ? "Kelo" : host.c_str());
    }

    // The engine does not say which features the page has asked for. But a size that is neither the
    // opener's nor its window's, the page has named.
    bool isMeantAsPopup(const GdkRectangle& asked) const {
        return asked.x != 0 || asked.y != 0 ||
               std::ranges::find(usualSizes, Size{asked.width, asked.height}) == usualSizes.end();
    }

    bool belongsInBrowser() const {
        const auto url = Url::parse(address);
        return url && url->scheme() == "https" && !url->hasSameOrigin(context.service);
    }

    static void readyToShow(WebKitWebView* view, Popup* self) {
        GdkRectangle asked{};
        webkit_window_properties_get_geometry(webkit_web_view_get_window_properties(view), &asked);
        const bool isPopup = self->isMeantAsPopup(asked);
        if (!isPopup && self->belongsInBrowser()) {
            const auto open = self->context.openExternally;
            const std::string address = self->address;
            gtk_window_destroy(self->window);
            open(address);
            return;
        }
        gtk_window_set_default_size(self->window,
                                    isPopup ? std::max(asked.width, smallestSize) : usualWidth,
                                    isPopup ? std::max(asked.height, smallestSize) : usualHeight);
        gtk_window_present(self->window);
        gtk_widget_grab_focus(GTK_WIDGET(view));
    }

    // The page may have a question before it goes.
    void close() {
        dialogs.tryToLeave([this](bool leaves) {
            if (leaves)
                gtk_window_destroy(window);
        });
    }

    PopupContext context;
    std::string address; ///< that it was opened with
    ShownPage shown;
    WebKitWebView* view;
    Downloads downloads;
    NavigationPolicy policy;
    GtkWindow* window;
    ScriptDialogs dialogs;
    std::vector<Size> usualSizes;
    // Last: disconnected before anything that the handlers use is destroyed.
    std::vector<gobject::SignalConnection> connections;
};

// Null refuses, and window.open() then gives null. Links that ask for a new window do not get this
// far: the policy knows where they lead.
GtkWidget* create(WebKitWebView* opener, WebKitNavigationAction* action,
                  const PopupContext* context) {
    if (!webkit_navigation_action_is_user_gesture(action))
        return nullptr;
    const std::string address = addressOf(action);
    const auto url = Url::parse(address);
    const bool isEmpty = address.empty() || address == "about:blank";
    if (!isEmpty && !address.starts_with("blob:") && !(url && url->scheme() == "https")) {
        if (url && url->scheme() == "http")
            context->openExternally(address);
        return nullptr;
    }
    auto popup = std::make_unique<Popup>(opener, *context, address);
    WebKitWebView* const view = popup->nativeView();
    GtkWindow* const window = popup->nativeWindow();
    // Not to the view, which the connections of its downloads keep alive.
    g_object_set_data_full(G_OBJECT(window), "kelo-popup", popup.release(), [](gpointer data) {
        std::unique_ptr<Popup>(static_cast<Popup*>(data));
    });
    return GTK_WIDGET(view);
}

} // namespace

void offerPopups(WebKitWebView* opener, PopupContext given) {
    auto context = std::make_unique<PopupContext>(std::move(given));
    g_signal_connect(opener, "create", G_CALLBACK(create), context.get());
    g_object_set_data_full(G_OBJECT(opener), "kelo-popups", context.release(), [](gpointer data) {
        std::unique_ptr<PopupContext>(static_cast<PopupContext*>(data));
    });
}

} // namespace kelo::webkit
