#pragma once

#include <CLI/CLI.hpp>
#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>

#include "driverhost/HostError.h"

/// The commands of the program, and the one that the command line names. From this tree come
/// --help, the shell completion and the manual page.
///
/// A command is a pair of files, XCommand.h and XCommand.cpp, with
///  - a record of its options and a function that takes them, which answers an exit status or
///    nothing, and throws HostError;
///  - `void AddXCommand(CommandTree& tree)`, called in Main.cpp: it adds the command, its
///    arguments and its examples.
///
///     void AddProofCommand(CommandTree& tree) {
///         auto [command, options] = tree.Add("proof", "Draw a printed page", MakeProof);
///         command.add_option("OUTDIR", options.Folder, "What run wrote")
///             ->required()->type_name(kFolderArgument);
///         AddHelp(command, "Each ink shows in its display colour.",
///                 {"driverhost proof printed -o proof.png"});
///     }
class CommandTree {
  public:
    /// A command that is being made. Both live as long as the tree.
    template <class Options>
    struct Command {
        CLI::App& App;
        Options& Values;  ///< what its arguments fill
    };

    /// `program` is borrowed.
    explicit CommandTree(CLI::App& program) : program_(program) {}
    CommandTree(const CommandTree&) = delete;
    CommandTree& operator=(const CommandTree&) = delete;

    template <class Options, class Answer>
    Command<Options> Add(const std::string& name, const std::string& description,
                         Answer (*run)(const Options&)) {
        const auto options = std::make_shared<Options>();
        CLI::App* const command = program_.add_subcommand(name, description);
        command->final_callback([this, options, run] {
            if constexpr (std::is_void_v<Answer>)
                run(*options);
            else
                status_ = run(*options);
        });
        return {*command, *options};
    }

    const CLI::App& Program() const { return program_; }
    /// What the command answered that ran when the program parsed its command line.
    int Status() const { return status_; }

  private:
    CLI::App& program_;
    int status_ = kSuccess;
};

// What an argument names, as its type name: --help shows it, and the shell completes it.
inline constexpr char kFileArgument[] = "FILE";
inline constexpr char kFolderArgument[] = "FOLDER";
inline constexpr char kPathArgument[] = "PATH";  ///< a file or a folder
inline constexpr char kModelArgument[] = "MODEL";

/// Sets the text below a command's options: `notes`, which may be empty, and examples, each a
/// command line that a shell takes as it stands; one that continues on a second line ends its
/// first with a backslash. An example whose status is not 0 ends with a comment that says it:
/// "# status 1: a channel differs". The tests run every example in a folder of small artwork and
/// jobs, tests/ExamplesTest.cpp, so that all of them stay true.
void AddHelp(CLI::App& command, const std::string& notes,
             std::initializer_list<const char*> examples);
