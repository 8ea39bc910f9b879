#pragma once
// Bounded walks over block contents: what is left out of a drawing built to multiply its content
// is noted once per run, and the run says so at its end.

namespace tv::host {

void NoteContentLeftOut();

}  // namespace tv::host
