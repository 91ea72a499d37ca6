/* The least that any program takes for the files that a run reads: opens each, reads it by one call
 * and closes it.
 *
 * usage: floor LIST BYTES     (paths, each ended by a NUL; no file holds more than BYTES) */

#include <fcntl.h>
#include <stdbool.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

/* Returns how many bytes the file holds, or -1. */
static ssize_t read_once(const char* path, char* bytes, size_t room) {
  const int fd = open(path, O_RDONLY | O_CLOEXEC);
  if (fd < 0) return -1;
  const ssize_t count = read(fd, bytes, room);
  return close(fd) == 0 ? count : -1;
}

/* Returns whether all files of the list could be read. */
static bool read_all(const char* list, char* paths, char* bytes, size_t room) {
  const ssize_t length = read_once(list, paths, room);
  for (const char* path = paths; path < paths + length; path += strlen(path) + 1) {
    if (read_once(path, bytes, room) < 0) return false;
  }
  return length > 0;
}

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const size_t room = strtoull(argv[2], NULL, 10);
  char* const paths = malloc(room);
  char* const bytes = malloc(room);
  const bool done = paths != NULL && bytes != NULL && read_all(argv[1], paths, bytes, room);
  free(paths);
  free(bytes);
  return done ? 0 : 1;
}
