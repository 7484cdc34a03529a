#pragma once

// The built program, run as a user runs it, on small documents.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "driverhost/OutputFiles.h"
#include "driverhost/WorkFolder.h"
#include "platform/ChildProcess.h"

namespace fs = std::filesystem;

inline std::string ReadText(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

struct Page {
    std::string MediaBox;
    std::string Content;
};

/// A PDF without compression; its inks /S0 and /S1 are the separations WHITE and Orange, /Over is
/// the graphics state that overprints, and /Sans is a font that it does not bring along.
inline std::string Pdf(const std::vector<Page>& pages) {
    std::vector<std::string> objects = {
        "<< /Type /Catalog /Pages 2 0 R >>",
        "",
        "<< /ColorSpace << /S0 [/Separation /WHITE /DeviceCMYK 4 0 R]\n"
        "/S1 [/Separation /Orange /DeviceCMYK 5 0 R] >>\n"
        "/ExtGState << /Over << /OP true /op true /OPM 1 >> >> /Font << /Sans 6 0 R >> >>",
        "<< /FunctionType 2 /Domain [0 1] /N 1 /C0 [0 0 0 0] /C1 [0.1 0 0 0] >>",
        "<< /FunctionType 2 /Domain [0 1] /N 1 /C0 [0 0 0 0] /C1 [0 0.5 1 0] >>",
        "<< /Type /Font /Subtype /Type1 /BaseFont /Fenland-Sans >>"};
    std::string kids;
    for (const Page& page : pages) {
        kids += fmt::format("{} 0 R ", objects.size() + 1);
        objects.push_back(
            fmt::format("<< /Type /Page /Parent 2 0 R /MediaBox [{}] /Contents {} 0 R >>",
                        page.MediaBox, objects.size() + 2));
        objects.push_back(fmt::format("<< /Length {} >>\nstream\n{}\nendstream",
                                      page.Content.size(), page.Content));
    }
    objects[1] =
        fmt::format("<< /Type /Pages /Kids [{}] /Count {} /Resources 3 0 R >>", kids, pages.size());
    std::string pdf = "%PDF-1.4\n";
    std::string places = "0000000000 65535 f \n";
    for (std::size_t i = 0; i < objects.size(); ++i) {
        places += fmt::format("{:010} 00000 n \n", pdf.size());
        pdf += fmt::format("{} 0 obj {}\nendobj\n", i + 1, objects[i]);
    }
    return fmt::format("{}xref\n0 {}\n{}trailer << /Size {} /Root 1 0 R >>\nstartxref\n{}\n%%EOF\n",
                       pdf, objects.size() + 1, places, objects.size() + 1, pdf.size());
}

/// Cyan, full, on the lower left quarter and magenta, half, on the upper right one of an inch.
inline const Page kQuarters = {"0 0 72 72",
                               "1 0 0 0 k 0 0 36 36 re f 0 0.5 0 0 k 36 36 36 36 re f"};

using Arguments = std::vector<std::string>;

struct Outcome {
    int Status = -1;
    std::string Output;  ///< standard output and standard error
};

class DriverHost : public testing::Test {
  protected:
    fs::path Path(const std::string& name) const { return folder_.Path() / name; }
    Listing Files() const { return ListFiles(folder_.Path()); }
    void Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(Path(name), std::ios::binary) << bytes;
    }

    /// Runs a program in the test's folder; one that hangs is killed after ten minutes.
    Outcome RunProgram(const Arguments& arguments) const {
        const fs::path log = tools_.Path() / "log";
        ChildProcess process;
        if (!process.Launch({arguments,
                             folder_.Path().string(),
                             log.string(),
                             {{"QL_BASE_FOLDER", ""},
                              {"QL_MESSAGE_FILE", ""},
                              {"PATH", tools_.Path().string() + ":/usr/local/bin:/usr/bin:/bin"}}}))
            return {};
        for (int i = 0; i < 60000 && !process.HasEnded(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        process.Kill();
        return {process.Result(), ReadText(log)};
    }

    Outcome Host(Arguments arguments) const {
        arguments.insert(arguments.begin(), DRIVERHOST);
        return RunProgram(arguments);
    }

    /// In a shell, where $host is the program.
    Outcome Shell(const std::string& script) const {
        return RunProgram({"/bin/sh", "-c", "export host='" DRIVERHOST "'; " + script});
    }

    Outcome MakeJob(const std::string& pdf, Arguments more = {}) const {
        more.insert(more.begin(), {"make-job", pdf, "-o", "job", "--model", "Fenland R4"});
        return Host(more);
    }

    /// A job of a small page in the mode of 8 bits a pixel.
    void MakeSmallJob() const {
        Write("a.pdf", Pdf({kQuarters}));
        ASSERT_EQ(MakeJob("a.pdf", {"--color-mode", "2"}).Status, 0);
    }

    /// Puts a program named gs before the real one: it reports one page of an inch, then does
    /// what `script` says.
    void ReplaceRasterizer(const std::string& script) {
        const fs::path gs = tools_.Path() / "gs";
        std::ofstream(gs) << "#!/bin/sh\ncase \"$*\" in *-dPDFINFO*)\n"
                             "  printf 'File has 1 page.\\nPage 1 MediaBox: [0 0 72 72]\\n'\n"
                             "  exit 0;;\nesac\n"
                          << script << '\n';
        fs::permissions(gs, fs::perms::owner_all);
    }

    /// Lines of what a command prints that name a place in the file, without its name.
    static std::vector<std::string> FoundIn(const std::string& file, const Outcome& outcome) {
        std::vector<std::string> found;
        std::istringstream lines(outcome.Output);
        for (std::string line; std::getline(lines, line);)
            if (line.starts_with(file + ':') && !line.starts_with(file + ": "))
                found.push_back(line.substr(file.size() + 1));
        return found;
    }

    /// As many findings as expected, each with the start that is given.
    template <class Texts>
    static void ExpectFound(const std::vector<std::string>& found, const Texts& starts) {
        EXPECT_EQ(found.size(), std::size(starts)) << testing::PrintToString(found);
        for (std::size_t i = 0; i < std::min(found.size(), std::size(starts)); ++i)
            EXPECT_TRUE(found[i].starts_with(starts[i])) << found[i] << '\n' << starts[i];
    }

    /// A failure that says why in one line and leaves the folder as it was.
    void ExpectRefused(const Outcome& made, const std::string& message,
                       const Listing& before) const {
        EXPECT_EQ(made.Status, 1) << made.Output;
        EXPECT_TRUE(Contains(made.Output, message)) << message << ": " << made.Output;
        EXPECT_EQ(std::count(made.Output.begin(), made.Output.end(), '\n'), 1) << made.Output;
        EXPECT_TRUE(Files() == before) << message;
    }

    WorkFolder folder_{fs::temp_directory_path() / "driverhost-test"};
    WorkFolder tools_{fs::temp_directory_path() / "driverhost-tools"};
};
