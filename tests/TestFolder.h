#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

#include "host/AFilePath.h"

/// A folder of one test's own, removed with everything in it.
class TestFolder {
  public:
    TestFolder()
        : folder_(std::filesystem::temp_directory_path() /
                  ("host-test-" + std::to_string(std::random_device()()))) {
        std::filesystem::create_directories(folder_);
    }
    ~TestFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    std::string Name(std::string_view name) const { return (folder_ / name).string(); }
    AFilePath Path(std::string_view name) const { return AFilePath(Name(name)); }

    AFilePath Write(std::string_view name, std::string_view bytes) const {
        // A new file: some file systems wait for the disk when an old one is cut and rewritten.
        std::filesystem::remove(folder_ / name);
        std::ofstream(folder_ / name, std::ios::binary)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return Path(name);
    }
    std::string Read(std::string_view name) const {
        std::ifstream file(folder_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    /// Files in the folder.
    std::ptrdiff_t Count() const {
        return std::distance(std::filesystem::directory_iterator(folder_),
                             std::filesystem::directory_iterator());
    }

  private:
    std::filesystem::path folder_;
};
