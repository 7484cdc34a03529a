#pragma once

class CommandTree;

void AddHeaderCommand(CommandTree& tree);
