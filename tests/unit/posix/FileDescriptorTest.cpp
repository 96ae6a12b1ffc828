#include "posix/FileDescriptor.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>

#include <cerrno>
#include <string>
#include <thread>

namespace kelo::test {

using posix::FileDescriptor;
using posix::readAll;
using posix::writeAll;

namespace {

bool isOpen(int descriptor) {
    return ::fcntl(descriptor, F_GETFD) >= 0;
}

FileDescriptor memoryFile() {
    return FileDescriptor(::memfd_create("kelo-test", MFD_CLOEXEC));
}

struct Pipe {
    Pipe() {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0)
            return;
        reading = FileDescriptor(ends[0]);
        writing = FileDescriptor(ends[1]);
    }
    FileDescriptor reading;
    FileDescriptor writing;
};

} // namespace

TEST(FileDescriptor, IsClosedWithItsOwnerAndWithNoOther) {
    int number = -1;
    {
        FileDescriptor first = memoryFile();
        number = first.get();
        const FileDescriptor& emptied = first;
        const FileDescriptor second = std::move(first);
        EXPECT_FALSE(emptied);
        EXPECT_TRUE(isOpen(number));
    }
    EXPECT_FALSE(isOpen(number));
}

TEST(FileDescriptor, ThatIsReleasedStaysOpen) {
    int number = -1;
    {
        FileDescriptor owner = memoryFile();
        number = owner.release();
    }
    EXPECT_TRUE(isOpen(number));
    const FileDescriptor closed(number);
}

TEST(WriteAll, WritesMoreThanAPipeHolds) {
    const std::string text(1 << 20, 'k');
    Pipe pipe;
    ASSERT_TRUE(pipe.writing);
    std::optional<std::string> received;
    std::thread reader([&] { received = readAll(pipe.reading.get(), text.size()); });
    EXPECT_TRUE(writeAll(pipe.writing.get(), text));
    pipe.writing = FileDescriptor();
    reader.join();
    EXPECT_EQ(received, text);
}

TEST(WriteAll, FailsIfTheDiskTakesPartOfTheBytesOnly) {
    // The kernel writes up to the limit and reports that many bytes; the next call fails.
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1000, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    const FileDescriptor file = memoryFile();
    const bool written = writeAll(file.get(), std::string(1500, 'k'));
    const int reason = errno;
    ::setrlimit(RLIMIT_FSIZE, &before);
    ::signal(SIGXFSZ, handler);
    EXPECT_FALSE(written);
    EXPECT_EQ(reason, EFBIG);
    EXPECT_EQ(::lseek(file.get(), 0, SEEK_END), 1000);
}

TEST(WriteAll, SaysThatItFailed) {
    Pipe pipe;
    errno = 0;
    EXPECT_FALSE(writeAll(pipe.reading.get(), "text"));
    EXPECT_EQ(errno, EBADF);
}

TEST(WriteAll, OfNothingSucceeds) {
    EXPECT_TRUE(writeAll(-1, std::string_view()));
}

TEST(ReadAll, TakesExactlyTheLimitAndNoByteMore) {
    const FileDescriptor file = memoryFile();
    ASSERT_TRUE(writeAll(file.get(), "12345"));
    ::lseek(file.get(), 0, SEEK_SET);
    EXPECT_EQ(readAll(file.get(), 5), "12345");
    ::lseek(file.get(), 0, SEEK_SET);
    EXPECT_EQ(readAll(file.get(), 4), std::nullopt);
    ::lseek(file.get(), 3, SEEK_SET);
    EXPECT_EQ(readAll(file.get(), 4), "45");
}

TEST(ReadAll, OfWhatCannotBeReadIsNothing) {
    EXPECT_EQ(readAll(-1, 10), std::nullopt);
}

} // namespace kelo::test
