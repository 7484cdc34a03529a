#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// A temporary folder with a base folder for the plug-in (`base`), a folder for output (`out`)
/// and one for job files (`jobs`). From then on the environment names the base folder, the message
/// file and the log file.
class BaseFolder {
  public:
    BaseFolder();
    ~BaseFolder();
    BaseFolder(const BaseFolder&) = delete;
    BaseFolder& operator=(const BaseFolder&) = delete;

    /// Makes the environment name this folder again, after another was made.
    void Use() const;

    std::filesystem::path Root() const { return root_; }
    std::filesystem::path Base() const { return root_ / "base"; }
    std::filesystem::path Out() const { return root_ / "out"; }
    std::filesystem::path Jobs() const { return root_ / "jobs"; }
    std::filesystem::path Temp() const { return Base() / "Temp"; }
    std::filesystem::path Options() const { return Base() / "Jobs and Settings/OptionsDrivers"; }

    /// Makes `description` the file of every model whose name contains `model`.
    void InstallModel(const std::string& model, const std::string& description);

    /// Texts of the messages shown so far. Anything but a plain message (an OK button, set to
    /// the foreground, `owner` 0, no caption) is given as its JSON, members sorted.
    std::vector<std::string> Messages() const;
    /// Lines of the log file.
    std::vector<std::string> Log() const;
    /// Those of level E.
    std::vector<std::string> Errors() const;

  private:
    std::filesystem::path root_;
};

/// Every file and folder below `folder`, sorted, relative, folders with a '/' behind.
std::vector<std::string> Listing(const std::filesystem::path& folder);
/// Empty when the file is missing.
std::string ReadText(const std::filesystem::path& path);
void WriteText(const std::filesystem::path& path, const std::string& text);
/// `text` with every `from` replaced.
std::string Replaced(std::string text, const std::string& from, const std::string& to);
