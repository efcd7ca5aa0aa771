#include "vso/runtime/openSerial.h"

#include <fcntl.h>
#include <unistd.h>

int open_serial(const char* path, int flags) { return path == nullptr ? -1 : ::open(path, flags); }

int close_serial(int handle) { return ::close(handle); }
