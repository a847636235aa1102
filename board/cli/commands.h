// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_CLI_COMMANDS_H
#define KESTREL_BOARD_CLI_COMMANDS_H

namespace CLI {
class App;
}

namespace kestrel::board {

class CommandContext;
class ProgramArguments;

/// Each adds its commands to the command line. They throw BoardError when they run, and set
/// `exit_status` where it is not 0 for success.
void AddRunCommand(CLI::App& app, ProgramArguments& programs, int& exit_status);
void AddSharedBoardCommands(CLI::App& app, ProgramArguments& programs,
                            const CommandContext& context);
void AddInspectionCommands(CLI::App& app, const CommandContext& context);

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_CLI_COMMANDS_H
