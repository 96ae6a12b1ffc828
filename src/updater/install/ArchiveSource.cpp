#include "updater/install/ArchiveSource.h"

#include <unistd.h>

#include <cerrno>

namespace kelo::updater {

ArchivePointer makeTarReader() {
    ArchivePointer reader(archive_read_new());
    archive_read_support_format_tar(reader.get());
    archive_read_support_filter_zstd(reader.get());
    archive_read_support_filter_xz(reader.get());
    archive_read_support_filter_gzip(reader.get());
    return reader;
}

ArchivePointer makePackageReader() {
    ArchivePointer reader(archive_read_new());
    archive_read_support_format_ar(reader.get());
    return reader;
}

la_ssize_t ArchiveSource::read(archive* reader, void* data, const void** bytes) {
    auto& source = *static_cast<ArchiveSource*>(data);
    ssize_t count = 0;
    do
        count = ::pread(source.file, source.buffer.data(), source.buffer.size(), source.offset);
    while (count < 0 && errno == EINTR);
    if (count < 0) {
        archive_set_error(reader, errno, "cannot be read");
        return ARCHIVE_FATAL;
    }
    source.offset += count;
    *bytes = source.buffer.data();
    return count;
}

la_ssize_t MemberSource::read(archive* reader, void* data, const void** bytes) {
    auto& source = *static_cast<MemberSource*>(data);
    *bytes = source.buffer.data();
    const la_ssize_t count =
        archive_read_data(source.package, source.buffer.data(), source.buffer.size());
    if (count < 0)
        archive_set_error(reader, EIO, "the package is damaged");
    return count < 0 ? ARCHIVE_FATAL : count;
}

} // namespace kelo::updater
