#pragma once

#include <cstdio>
#include <string>

/// The folder that the running program lies in, without a separator at its end; empty when the
/// system does not tell.
std::string ProgramFolder();

/// The folder of the module (program or library) that this code is linked into, likewise.
std::string ModuleFolder();

/// Sets an environment variable of this process.
void SetEnvironment(const char* name, const char* value);

/// Creates a folder that only this user can enter, named `prefix` and a suffix that no other file
/// has; answers its path, empty on failure.
std::string CreatePrivateFolder(const std::string& prefix);

/// Gives the standard streams that the caller closed something that takes and gives nothing, so
/// that no file that the program opens is met under their numbers. Comes before any file is opened.
void HoldStandardStreams();

/// Whether a person watches what the stream receives.
bool IsTerminal(std::FILE* stream);

/// From here on an interrupt (Ctrl-C) or a request to end is noted instead of ending the program,
/// however often it comes: some tools send it twice. A file that grows beyond a limit gives a
/// failed write, no signal.
void NoteInterrupts();
bool InterruptNoted();
