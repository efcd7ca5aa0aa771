// The system's calls for a serial device, for callers without an object.
#pragma once

/// The result of the system's `open` of `path` with `flags`: a descriptor, or -1 with `errno` set. -1 for a null path.
/// Not for flags that create a file: no mode goes along.
int open_serial(const char* path, int flags);

/// The result of the system's `close` of `handle`.
int close_serial(int handle);
