#pragma once

class CommandTree;

void AddTicketCommand(CommandTree& tree);
