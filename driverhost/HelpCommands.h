#pragma once

class CommandTree;

/// `completion` and `man`: what the tree of commands says of itself. Added after all others.
void AddHelpCommands(CommandTree& tree);
