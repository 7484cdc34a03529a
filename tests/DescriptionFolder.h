#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// A base folder of its own below the system's temporary folder, with the host's variables set to
/// it for its lifetime and removed with everything in it afterwards.
class DescriptionFolder {
  public:
    DescriptionFolder();
    ~DescriptionFolder();
    DescriptionFolder(const DescriptionFolder&) = delete;
    DescriptionFolder& operator=(const DescriptionFolder&) = delete;

    /// Path of a file or folder below the base folder.
    std::filesystem::path Path(std::string_view name) const { return root_ / name; }
    /// Writes a file, making its folder.
    void Write(std::string_view name, std::string_view content) const;
    std::string Read(std::string_view name) const;
    /// Names of the files in a folder, sorted.
    std::vector<std::string> List(std::string_view folder) const;

    /// Writes a description and a model list that names it for every model.
    void Describe(std::string_view description) const;
    /// The messages shown since the last call. Each must have been shown with an OK button, in
    /// the foreground, without owner and caption, else it is answered with these beside it.
    std::vector<std::string> TakeMessages() const;

  private:
    std::filesystem::path root_;
};

/// One change of a text: every occurrence of `from`, of which there must be one, becomes `to`.
struct Edit {
    std::string_view from;
    std::string_view to;
};
std::string Edited(std::string text, const std::vector<Edit>& edits);

/// A description with three media, three print modes, two resolutions, five colours and three
/// colour modes, without faults.
extern const char* const kGoodDescription;
