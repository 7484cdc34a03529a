#pragma once

class CommandTree;

/// `inspect`: what job files, containers and channel files hold.
void AddInspectCommand(CommandTree& tree);
