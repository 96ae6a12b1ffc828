#pragma once

#include "base/ObservableObject.h"

#include <array>
#include <string>

namespace kelo::permission {

/// What a page may use only with the user's leave.
enum class Capability { microphone, camera, notifications };

inline constexpr std::array capabilities{Capability::microphone, Capability::camera,
                                         Capability::notifications};

enum class Answer {
    /// The user has not decided, and is asked each time.
    ask,
    allowed,
    denied,
};

/// What the user has answered the service's pages, from one start of the program to the next: in a
/// file that only the user can read. Main thread only.
class Permissions final : public ObservableObject {
public:
    /// path: of the file; empty to remember nothing beyond this process. service: the origin that
    /// the answers hold for. Answers that were given to another one count as never given.
    Permissions(std::string path, std::string service);

    Answer answer(Capability capability) const;
    /// Writes the file, too. If it cannot be written, that is logged and the file is removed where
    /// it can be: the answers then hold for this process, and the next one asks anew. Observers are
    /// notified before the change.
    void remember(Capability capability, Answer answer);

private:
    void load();
    void save() const;

    std::string path;
    std::string service;
    std::array<Answer, capabilities.size()> answers{};
};

} // namespace kelo::permission
