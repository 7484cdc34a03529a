#pragma once

#include <filesystem>
#include <stdexcept>

#include "platform/Program.h"

/// A private folder that goes with all that it holds.
class BenchFolder {
  public:
    explicit BenchFolder(const std::filesystem::path& parent)
        : path_(CreatePrivateFolder((parent / "outputdriver-bench-").string())) {
        if (path_.empty()) throw std::runtime_error("cannot create a folder in " + parent.string());
    }
    ~BenchFolder() {
        std::error_code ignored;  // what cannot be removed stays to be seen
        std::filesystem::remove_all(path_, ignored);
    }
    BenchFolder(const BenchFolder&) = delete;
    BenchFolder& operator=(const BenchFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }

  private:
    std::filesystem::path path_;
};
