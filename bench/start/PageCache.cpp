#include "start/PageCache.h"

#include "posix/FileDescriptor.h"
#include "testing/rig/ProcessTree.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

double residentBytes(int descriptor, std::size_t size) {
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    void* const memory = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
    if (memory == MAP_FAILED)
        return 0;
    std::vector<unsigned char> pages((size + page - 1) / page);
    double resident = 0;
    if (::mincore(memory, size, pages.data()) == 0)
        resident = static_cast<double>(
            std::ranges::count_if(pages, [](unsigned char bits) { return (bits & 1) != 0; }) *
            static_cast<std::ptrdiff_t>(page));
    ::munmap(memory, size);
    return resident;
}

} // namespace

std::set<fs::path> mappedFiles(pid_t root) {
    std::set<fs::path> files;
    for (const pid_t process : rig::processTree(root)) {
        std::ifstream maps(fs::path("/proc") / std::to_string(process) / "maps");
        std::string line;
        while (std::getline(maps, line)) {
            const auto path = line.find('/');
            if (path != std::string::npos && !line.ends_with(" (deleted)") &&
                line.compare(path, 5, "/dev/") != 0)
                files.insert(line.substr(path));
        }
    }
    return files;
}

CachedFiles dropFromCache(const std::set<fs::path>& files) {
    CachedFiles cached;
    for (const auto& path : files) {
        const posix::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        struct stat status {};
        if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
            status.st_size == 0)
            continue;
        ::posix_fadvise(file.get(), 0, 0, POSIX_FADV_DONTNEED);
        cached.size += static_cast<double>(status.st_size);
        cached.resident += residentBytes(file.get(), static_cast<std::size_t>(status.st_size));
    }
    return cached;
}

} // namespace kelo::bench
