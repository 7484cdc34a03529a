#pragma once

class CommandTree;

void AddOptionsCommand(CommandTree& tree);
