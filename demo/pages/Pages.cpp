#include "demo/pages/Pages.h"

#include "base/Base64.h"
#include "base/SecretText.h"
#include "demo/base/Digest.h"
#include "demo/http/FormData.h"
#include "demo/http/Replies.h"
#include "demo/http/Template.h"
#include "demo/pages/EmbeddedPages.h"

#include <array>
#include <chrono>
#include <utility>

namespace kelo::demo {
namespace {

constexpr const char* wrongPassword = "That email and password do not match. Try again.";

std::string page(const char* title, const char* name, const Values& values) {
    return fillTemplate(embeddedPage("layout.html"),
                        {{"title", title}, {"content", fillTemplate(embeddedPage(name), values)}});
}

std::string alert(const std::string& problem) {
    return problem.empty() ? std::string()
                           : fillTemplate("<p class=\"alert\" role=\"alert\">{{text}}</p>",
                                          {{"text", problem}});
}

struct Date {
    std::string machine; ///< 2026-11-21
    std::string human;   ///< 21 November 2026
};

Date dateOf(std::chrono::system_clock::time_point time) {
    constexpr std::array months = {"January",   "February", "March",    "April",
                                   "May",       "June",     "July",     "August",
                                   "September", "October",  "November", "December"};
    const std::chrono::year_month_day date(std::chrono::floor<std::chrono::days>(time));
    const auto year = std::to_string(static_cast<int>(date.year()));
    const auto month = static_cast<unsigned>(date.month());
    const auto day = static_cast<unsigned>(date.day());
    const auto twoDigits = [](unsigned number) {
        return (number < 10 ? "0" : "") + std::to_string(number);
    };
    return {year + "-" + twoDigits(month) + "-" + twoDigits(day),
            std::to_string(day) + " " + months.at(month - 1) + " " + year};
}

const char* contentTypeOf(const std::string& name) {
    if (name.ends_with(".css"))
        return "text/css; charset=utf-8";
    if (name.ends_with(".js"))
        return "text/javascript; charset=utf-8";
    return "image/svg+xml";
}

} // namespace

Pages::Pages(ServiceContext& context) : context(context) {}

Reply Pages::home(const Request& request) {
    const Session* session = context.sessionOf(request);
    if (!session)
        return redirectTo("/login");
    const Account& account = *context.accounts.find(session->email);
    return htmlReply(200, page("Kelo", "home.html",
                               {{"givenName", account.givenName},
                                {"displayName", account.displayName},
                                {"email", account.email},
                                {"csrfToken", session->csrfToken},
                                {"passkeys", passkeyList(account.email)},
                                {"code", account.code.current(std::chrono::system_clock::now())}}));
}

std::string Pages::passkeyList(const std::string& email) const {
    std::string items;
    for (const auto& passkey : context.passkeys.of(email)) {
        const auto date = dateOf(passkey.registered);
        items += fillTemplate(
            embeddedPage("passkey.html"),
            {{"label", passkey.label}, {"machineDate", date.machine}, {"date", date.human}});
    }
    if (items.empty())
        return std::string(embeddedPage("no-passkeys.html"));
    return "<ul class=\"passkeys\">\n" + items + "</ul>\n";
}

Reply Pages::login(const Request& request) {
    if (context.sessionOf(request))
        return redirectTo("/");
    const auto query = parseForm(request.query);
    const bool refused = query && query->contains("error");
    return loginPage(request, 200, "",
                     refused ? "Signing in did not work. Try again, or use your password." : "");
}

Reply Pages::loginPage(const Request& request, unsigned status, const std::string& email,
                       const std::string& problem) {
    auto reply = htmlReply(status, "");
    const auto token = context.csrfTokenFor(request, reply);
    reply.body = page("Sign in – Kelo", "login.html",
                      {{"csrfToken", token}, {"email", email}, {"alert", alert(problem)}});
    return reply;
}

Reply Pages::signIn(const Request& request) {
    auto form = parseForm(request.body);
    if (!form)
        return loginPage(request, 400, "", "The form could not be read. Try again.");
    const auto email = (*form)["email"];
    const SecretText password((*form)["password"]);
    wipe((*form)["password"]);
    if (!context.isCsrfTokenOf(request, (*form)["csrfToken"]))
        return loginPage(request, 403, email, "This page was open for too long. Try again.");

    switch (
        context.accounts.checkPassword(email, password.view(), std::chrono::steady_clock::now())) {
    case SecretCheck::right: {
        auto reply = redirectTo("/");
        context.openSession(request, context.accounts.find(email)->email, reply);
        return reply;
    }
    case SecretCheck::wrong:
        return loginPage(request, 401, email, wrongPassword);
    case SecretCheck::tooManyTries:
        return loginPage(request, 429, email, "Too many attempts. Wait a minute, then try again.");
    }
    return loginPage(request, 401, email, wrongPassword);
}

Reply Pages::signOut(const Request& request) {
    const Session* session = context.sessionOf(request);
    auto form = parseForm(request.body);
    auto reply = redirectTo("/login");
    if (!session)
        return reply;
    if (!form || !equalInConstantTime((*form)["csrfToken"], session->csrfToken))
        return refusal(403, "The CSRF token does not belong to the session");
    context.closeSession(request, reply);
    return reply;
}

Reply Pages::widget(const Request& request) {
    const Session* session = context.sessionOf(request);
    const Account* account = session ? context.accounts.find(session->email) : nullptr;
    const std::string_view stranger =
        context.showsStranger ? embeddedPage("stranger-frame.html") : "";
    auto reply = htmlReply(200, page("Voice – Kelo", "widget.html",
                                     {{"who", account ? "Signed in as " + account->displayName
                                                      : "You are not signed in"},
                                      {"stranger", std::string(stranger)}}));
    if (context.showsStranger)
        reply.with("Content-Security-Policy", std::string(contentPolicy) + "; frame-src 'self'");
    return reply;
}

// Its frame is a sandbox, so it is of no origin but its own, wherever it came from.
Reply Pages::stranger() const {
    if (!context.showsStranger)
        return notFound();
    return htmlReply(200, std::string(embeddedPage("stranger.html")))
        .with("Content-Security-Policy", "default-src 'none'; script-src 'unsafe-inline'; "
                                         "frame-ancestors 'self'; sandbox allow-scripts")
        .with("X-Frame-Options", "SAMEORIGIN");
}

Reply Pages::notFound() const {
    return htmlReply(404, page("Page not found – Kelo", "not-found.html", {}));
}

Reply Pages::asset(const Request& request, const std::string& name) const {
    const auto content = embeddedPage(name);
    const auto tag = "\"" + base64URLEncode(sha256(content)).substr(0, 22) + "\"";
    Reply reply{200, contentTypeOf(name), std::string(content), {}};
    reply.with("ETag", tag).with("Cache-Control", "no-cache");
    if (request.header("if-none-match") == tag) {
        reply.status = 304;
        reply.body.clear();
    }
    return reply;
}

} // namespace kelo::demo
