#pragma once

#include "platform/FileSystem.h"

#include <map>
#include <string>
#include <vector>

namespace kelo::fakes {

/// Files in memory. Only regular ones.
class FakeFileSystem final : public platform::FileSystem {
public:
    std::unique_ptr<platform::OpenFile> openForWriting(const std::string& path) override {
        calls.push_back("open " + path);
        const auto file = files.find(path);
        if (file == files.end() || !writable)
            return nullptr;
        return std::make_unique<File>(file->second, calls);
    }
    bool writeWholeFile(const std::string& path, ByteView bytes) override {
        calls.push_back("write whole " + path);
        if (!writable)
            return false;
        files[path] = textOf(bytes);
        return true;
    }

    std::map<std::string, std::string> files;
    std::vector<std::string> calls;
    bool writable = true;

private:
    class File final : public platform::OpenFile {
    public:
        File(std::string& content, std::vector<std::string>& calls)
            : content(content), calls(calls) {}
        ~File() override { calls.emplace_back("close"); }
        void seekToEnd() override {
            calls.emplace_back("seek to end");
            position = content.size();
        }
        void write(ByteView bytes) override {
            calls.emplace_back("write");
            content.replace(position, bytes.size(), textOf(bytes));
            position += bytes.size();
        }

    private:
        std::string& content;
        std::vector<std::string>& calls;
        std::size_t position = 0;
    };
};

} // namespace kelo::fakes
