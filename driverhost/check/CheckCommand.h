#pragma once

#include <string>

class CommandTree;

struct CheckOptions {
    std::string Path;     ///< base folder or file; empty: the base folder that QL_BASE_FOLDER names
    bool Strict = false;  ///< warnings fail too
    bool Json = false;
};

/// Reports what the driver would refuse, ignore or guess in model data. kFailed when there are
/// errors (or, when strict, warnings). Throws HostError(kUsage) when there is no such path. Sets
/// QL_BASE_FOLDER for a path that is a base folder or lies in one.
int CheckModelData(const CheckOptions& options);

void AddCheckCommand(CommandTree& tree);
