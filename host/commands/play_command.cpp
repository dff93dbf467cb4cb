#include "host/commands/play_command.h"

#include "host/commands/player.h"
#include "host/system/console.h"
#include "host/system/host_error.h"

namespace tarvex::host {

void RunPlay(const PlayOptions& options) {
  GraphSession session(options.session);
  Player player(session, options);
  const GraphEnd end = player.Play();
  WriteOutput('\n' + player.Summary());
  if (end == GraphEnd::kAborted) throw HostError(ExitCode::kPlayback, session.File() + ": " + player.Failure());
}

}  // namespace tarvex::host
