#pragma once

class CommandTree;

/// `diff`: two output folders, or two files, compared.
void AddDiffCommand(CommandTree& tree);
