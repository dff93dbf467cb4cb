#include "host/play_command.h"

#include "host/console.h"
#include "host/host_error.h"
#include "host/player.h"

namespace tarvex::host {

void RunPlay(const PlayOptions& options) {
  CGraphSession session(options.session);
  CPlayer player(session, options);
  const GraphEnd end = player.Play();
  WriteOutput('\n' + player.Summary());
  if (end == GraphEnd::kAborted) throw HostError(ExitCode::kPlayback, session.File() + ": " + player.Failure());
}

}  // namespace tarvex::host
