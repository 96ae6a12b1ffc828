#include "updater/tree/TreeExchange.h"

#include "updater/files/InstallFailure.h"
#include "updater/files/InstallFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <set>

namespace kelo::updater {

namespace {

constexpr const char* programFolder = "bin";
constexpr const char* program = "kelo";

bool move(int from, const std::string& name, int to, const std::string& newName) {
    return ::renameat(from, name.c_str(), to, newName.c_str()) == 0;
}

bool move(int from, const std::string& name, int to) {
    return move(from, name, to, name);
}

bool mark(int folder, const std::string& name) {
    return ::mkdirat(folder, name.c_str(), 0700) == 0 || errno == EEXIST;
}

std::vector<std::string> namesInEither(int one, int other, const char* except) {
    std::set<std::string> names;
    for (const int folder : {one, other}) {
        for (auto& name : namesIn(folder))
            names.insert(std::move(name));
    }
    names.erase(except);
    return {names.begin(), names.end()};
}

/// The exchange for file systems that cannot exchange two folders atomically.
class PieceByPiece {
public:
    PieceByPiece(int parent, const std::string& rootName, int work, const ExchangeCalls& calls)
        : work(work),
          calls(calls),
          root(openFolder(parent, rootName)),
          fresh(openFolder(work, "new")),
          // Once this folder exists, an interrupted exchange is undone by the next start.
          previous(makeFolder(work, "previous")),
          added(makeFolder(work, "added")) {}

    /// False on failure, with errno set.
    bool run() {
        if (!root || !fresh || !previous || !added)
            return false;
        calls.step();
        for (const auto& name : namesInEither(root.get(), fresh.get(), programFolder)) {
            if (!exchangePiece(name))
                return false;
        }
        return syncAll() && exchangePrograms() && syncAll();
    }

private:
    bool exchangePiece(const std::string& name) {
        const bool kept = exists(root.get(), name) ? move(root.get(), name, previous.get())
                                                   : mark(added.get(), name);
        calls.step();
        const bool placed =
            !exists(fresh.get(), name) || (kept && move(fresh.get(), name, root.get()));
        calls.step();
        return kept && placed;
    }

    bool exchangePrograms() {
        const posix::FileDescriptor bin = makeFolder(root.get(), programFolder);
        const posix::FileDescriptor freshBin = openFolder(fresh.get(), programFolder);
        const posix::FileDescriptor previousBin = makeFolder(previous.get(), programFolder);
        const posix::FileDescriptor addedBin = makeFolder(added.get(), programFolder);
        if (!bin || !freshBin || !previousBin || !addedBin)
            return false;
        auto names = namesInEither(bin.get(), freshBin.get(), program);
        names.emplace_back(program);
        for (const auto& name : names) {
            const bool kept = exists(bin.get(), name) ? keep(bin.get(), name, previousBin.get())
                                                      : mark(addedBin.get(), name);
            calls.step();
            if (!kept || (name == program && !syncAll()))
                return false;
            const bool placed = name == program || exists(freshBin.get(), name)
                                    ? move(freshBin.get(), name, bin.get())
                                    : ::unlinkat(bin.get(), name.c_str(), 0) == 0;
            calls.step();
            if (!placed)
                return false;
        }
        return ::fsync(bin.get()) == 0;
    }

    /// Adds a second name for the file, or a copy, and leaves the file in place. Atomic.
    bool keep(int bin, const std::string& name, int previousBin) {
        if (::linkat(bin, name.c_str(), previousBin, name.c_str(), 0) == 0)
            return true;
        removeTree(work, "copying");
        const posix::FileDescriptor copying = makeFolder(work, "copying");
        return copying && copyFile(bin, name, copying.get()) &&
               move(copying.get(), name, previousBin);
    }

    bool syncAll() {
        return ::fsync(root.get()) == 0 && ::fsync(fresh.get()) == 0 &&
               ::fsync(previous.get()) == 0 && ::fsync(work) == 0;
    }

    int work;
    const ExchangeCalls& calls;
    posix::FileDescriptor root;
    posix::FileDescriptor fresh;
    posix::FileDescriptor previous;
    posix::FileDescriptor added;
};

bool takeBackPieces(int root, int work, int previous, const ExchangeCalls& calls) {
    bool all = true;
    const posix::FileDescriptor discarded = makeFolder(work, "discarded");
    for (const auto& name : namesIn(previous)) {
        if (name == programFolder)
            continue;
        if (exists(root, name)) {
            removeTree(discarded.get(), name);
            all = move(root, name, discarded.get()) && all;
            calls.step();
        }
        all = move(previous, name, root) && all;
        calls.step();
    }
    const posix::FileDescriptor added = openFolder(work, "added");
    for (const auto& name : added ? namesIn(added.get()) : std::vector<std::string>()) {
        if (name != programFolder)
            all = removeTree(root, name) && all;
        calls.step();
    }
    return all;
}

bool takeBackPrograms(int root, int work, int previous, const ExchangeCalls& calls) {
    bool all = true;
    const posix::FileDescriptor bin = openFolder(root, programFolder);
    if (const posix::FileDescriptor previousBin = openFolder(previous, programFolder)) {
        auto names = namesIn(previousBin.get());
        std::partition(names.begin(), names.end(),
                       [](const auto& name) { return name == program; });
        for (const auto& name : names) {
            all = move(previousBin.get(), name, bin.get()) && all;
            // rename(2) does nothing if both names refer to the same file.
            removeTree(previousBin.get(), name);
            calls.step();
        }
    }
    const posix::FileDescriptor added = openFolder(work, "added");
    const posix::FileDescriptor addedBin =
        added ? openFolder(added.get(), programFolder) : posix::FileDescriptor();
    for (const auto& name : addedBin ? namesIn(addedBin.get()) : std::vector<std::string>()) {
        all = removeTree(bin.get(), name) && all;
        calls.step();
    }
    return all && ::fsync(bin.get()) == 0;
}

bool cannotExchange(int error) {
    return error == ENOSYS || error == EINVAL || error == EOPNOTSUPP;
}

} // namespace

ExchangeCalls::ExchangeCalls()
    : exchange([](int parent, const char* name, int otherParent, const char* otherName) {
          return ::renameat2(parent, name, otherParent, otherName, RENAME_EXCHANGE) == 0 ? 0
                                                                                         : errno;
      }) {}

std::string workFolderName(const std::filesystem::path& root) {
    return "." + root.filename().string() + ".kelo-update";
}

void exchangeTrees(const std::filesystem::path& root, int parent, int work,
                   const ExchangeCalls& calls) {
    const std::string name = root.filename();
    calls.step();
    const int error = calls.exchange(parent, name.c_str(), work, "new");
    calls.step();
    if (error == 0) {
        // Only gives the old tree a clearer name. Recovery works with either.
        move(work, "new", work, "old");
        calls.step();
        ::fsync(parent);
        ::fsync(work);
        return;
    }
    if (!cannotExchange(error))
        throw installFailure(error, root, "exchange");
    if (!PieceByPiece(parent, name, work, calls).run()) {
        const int reason = errno;
        takeBack(root, parent, work, calls);
        throw installFailure(reason, root, "exchange piece by piece");
    }
}

bool exchangeWasInterrupted(int work) {
    const posix::FileDescriptor fresh = openFolder(work, "new");
    const posix::FileDescriptor bin =
        fresh ? openFolder(fresh.get(), programFolder) : posix::FileDescriptor();
    return exists(work, "previous") && bin && exists(bin.get(), program);
}

bool takeBack(const std::filesystem::path& root, int parent, int work, const ExchangeCalls& calls) {
    const posix::FileDescriptor tree = openFolder(parent, root.filename());
    const posix::FileDescriptor previous = openFolder(work, "previous");
    if (!tree || !previous)
        return false;
    // The program first, because it can go on here if this process is killed; the other one may not
    // even start.
    const bool programs = takeBackPrograms(tree.get(), work, previous.get(), calls);
    const bool pieces = takeBackPieces(tree.get(), work, previous.get(), calls);
    return programs && pieces && ::fsync(tree.get()) == 0;
}

} // namespace kelo::updater
