#pragma once

/// Writes a line to the suite's log again and again on so many threads at once. Prints the samples
/// "agent", microseconds a line, and "floor", the same for nothing but appending the line's bytes
/// to a file, one thread after the other.
void WriteLogLines(int threads, int lines);
