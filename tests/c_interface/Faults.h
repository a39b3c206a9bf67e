#pragma once

/// How many allocations of this thread still succeed before one fails; below 0: all do.
extern thread_local int allocationsLeft;
