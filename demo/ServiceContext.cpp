#include "demo/ServiceContext.h"

#include "demo/base/ServiceError.h"

#include <iostream>
#include <utility>

namespace kelo::demo {
namespace {

std::string sessionCookieWith(std::string_view value, std::chrono::seconds life) {
    return std::string(ServiceContext::sessionCookie) + "=" + std::string(value) +
           "; Path=/; Max-Age=" + std::to_string(life.count()) + "; Secure; HttpOnly; SameSite=Lax";
}

} // namespace

ServiceContext::ServiceContext(std::string origin, std::string passkeyOrigin, StateFile state)
    : origin(std::move(origin)),
      verifier(relyingParty, std::move(passkeyOrigin)),
      state(std::move(state)) {
    this->state.load(passkeys, sessions);
}

const Session* ServiceContext::sessionOf(const Request& request) const {
    for (const auto& token : request.cookies(sessionCookie)) {
        const Session* session = sessions.find(token, std::chrono::system_clock::now());
        if (session && accounts.find(session->email))
            return session;
    }
    return nullptr;
}

void ServiceContext::openSession(const Request& request, std::string_view email, Reply& reply) {
    forgetSessionOf(request);
    const auto token = sessions.open(email, std::chrono::system_clock::now());
    save();
    reply.with("Set-Cookie", sessionCookieWith(token, SessionTable::lifetime));
}

void ServiceContext::closeSession(const Request& request, Reply& reply) {
    forgetSessionOf(request);
    save();
    reply.with("Set-Cookie", sessionCookieWith("", std::chrono::seconds(0)));
}

void ServiceContext::forgetSessionOf(const Request& request) {
    while (const Session* session = sessionOf(request))
        sessions.close(std::string(session->identifier));
}

std::string ServiceContext::csrfTokenFor(const Request& request, Reply& reply) const {
    // A second page in the same browser must not make the first one's form useless.
    if (auto token = csrf.unseal(request.cookies(csrfCookie)))
        return *token;
    auto token = csrf.make();
    reply.with("Set-Cookie", std::string(csrfCookie) + "=" + csrf.seal(token) +
                                 "; Path=/; Secure; HttpOnly; SameSite=Lax");
    return token;
}

bool ServiceContext::isCsrfTokenOf(const Request& request, std::string_view token) const {
    return csrf.matches(request.cookies(csrfCookie), token);
}

bool ServiceContext::save() const {
    try {
        state.save(passkeys, sessions);
        return true;
    } catch (const ServiceError& error) {
        std::cerr << "kelo-demo-service: " << error.what() << std::endl;
        return false;
    }
}

} // namespace kelo::demo
