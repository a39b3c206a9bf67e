#pragma once

/// What a host's visit to the service came to.
struct Visit {
  bool done = false;       ///< every title is installed now, and no operation failed
  unsigned int asked = 0;  ///< titles that it had installed
};

/// Does what a host program does that wants no title installed twice: asks for the titles and which
/// of them are installed, has the others installed, and asks again. Blocks until done.
/// @param again in, true: installed titles are installed once more.
Visit VisitService(bool again);
