#include "posix/Moments.h"
#include "posix/FileDescriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <string>

namespace kelo::posix {
namespace {

struct Pipe {
    Pipe() {
        int ends[2] = {-1, -1};
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
        out = FileDescriptor(ends[0]);
        in = FileDescriptor(ends[1]);
    }
    std::string taken() const {
        char bytes[4096];
        const auto length = ::read(out.get(), bytes, sizeof bytes);
        return length > 0 ? std::string(bytes, static_cast<std::size_t>(length)) : std::string();
    }
    FileDescriptor out;
    FileDescriptor in;
};

/// What moments tell is settled once for a process, so each case has a process of its own.
int statusOf(const std::function<bool()>& holds) {
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(holds() ? 0 : 1);
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
}

void ask(int descriptor) {
    ::setenv("KELO_MOMENTS", std::to_string(descriptor).c_str(), 1);
}

long long now() {
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

TEST(Moments, NothingIsToldUnlessAsked) {
    const Pipe pipe;
    EXPECT_EQ(statusOf([&] {
                  ::unsetenv("KELO_MOMENTS");
                  followMoments();
                  mark(Moment::mainEntered);
                  return !momentsAreFollowed() && pipe.taken().empty();
              }),
              0);
}

TEST(Moments, AMomentIsTheNameAndTheTimeOfTheMonotonicClock) {
    const Pipe pipe;
    EXPECT_EQ(statusOf([&] {
                  ask(pipe.in.get());
                  followMoments();
                  const auto before = now();
                  mark(Moment::loadFinished);
                  const auto after = now();
                  std::istringstream line(pipe.taken());
                  std::string name;
                  long long time = 0;
                  line >> name >> time;
                  return momentsAreFollowed() && name == "loadFinished" && line.get() == '\n' &&
                         time >= before && time <= after;
              }),
              0);
}

TEST(Moments, EveryMomentHasANameOfItsOwn) {
    for (const auto& name : momentNames) {
        EXPECT_FALSE(name.empty());
        EXPECT_EQ(std::count(momentNames.begin(), momentNames.end(), name), 1) << name;
    }
}

TEST(Moments, ProgramsThatAreStartedLaterGetNeitherVariableNorDescriptor) {
    const Pipe pipe;
    EXPECT_EQ(statusOf([&] {
                  ::fcntl(pipe.in.get(), F_SETFD, 0);
                  ask(pipe.in.get());
                  followMoments();
                  return !std::getenv("KELO_MOMENTS") &&
                         (::fcntl(pipe.in.get(), F_GETFD) & FD_CLOEXEC) != 0;
              }),
              0);
}

TEST(Moments, OnlyADescriptorOfItsOwnThatCanBeWrittenIsTaken) {
    const Pipe pipe;
    const int closed = ::fcntl(pipe.in.get(), F_DUPFD, 3);
    ::close(closed);
    for (const std::string& value :
         {std::to_string(closed), std::to_string(pipe.out.get()), std::string("2"),
          std::string("-1"), std::string(), std::to_string(pipe.in.get()) + "x"}) {
        EXPECT_EQ(statusOf([&] {
                      ::setenv("KELO_MOMENTS", value.c_str(), 1);
                      followMoments();
                      return !momentsAreFollowed() && !std::getenv("KELO_MOMENTS");
                  }),
                  0)
            << '"' << value << '"';
    }
}

TEST(Moments, AReaderThatIsGoneEndsTheTelling) {
    EXPECT_EQ(statusOf([] {
                  ::signal(SIGPIPE, SIG_IGN);
                  Pipe pipe;
                  ask(pipe.in.get());
                  followMoments();
                  pipe.out = FileDescriptor();
                  mark(Moment::mainEntered);
                  return !momentsAreFollowed();
              }),
              0);
}

} // namespace
} // namespace kelo::posix
