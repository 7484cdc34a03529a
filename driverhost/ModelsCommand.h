#pragma once

class CommandTree;

/// `models`: the models of the base folder.
void AddModelsCommand(CommandTree& tree);
