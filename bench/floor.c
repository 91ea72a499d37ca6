/* The least that any program takes for the files of a run: reads each file that the run reads, by one
 * call, and writes as many bytes into each page.
 *
 * usage: floor INPUTS PAGES BYTES
 *   INPUTS  lists the files to read, each path ended by a NUL
 *   PAGES   the same for the pages, which keep the sizes that they have
 *   BYTES   at least the size of the largest of all these files */

#include <fcntl.h>
#include <stdbool.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

/* Returns how many bytes the file holds, or -1. */
static ssize_t read_once(const char* path, char* bytes, size_t room) {
  const int fd = open(path, O_RDONLY | O_CLOEXEC);
  if (fd < 0) return -1;
  const ssize_t count = read(fd, bytes, room);
  return close(fd) == 0 ? count : -1;
}

static bool read_input(const char* path, char* bytes, size_t room) {
  return read_once(path, bytes, room) >= 0;
}

static bool write_page(const char* path, char* bytes, size_t room) {
  struct stat status;
  if (stat(path, &status) != 0 || (size_t)status.st_size > room) return false;
  const int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) return false;
  const ssize_t count = write(fd, bytes, (size_t)status.st_size);
  return close(fd) == 0 && count == status.st_size;
}

/* Returns whether the action succeeded for all files of a list. */
static bool for_each(const char* list, bool (*action)(const char*, char*, size_t), char* bytes,
                     size_t room) {
  char* const paths = malloc(room);
  const ssize_t length = paths == NULL ? -1 : read_once(list, paths, room);
  bool done = length > 0;
  for (const char* path = paths; done && path < paths + length; path += strlen(path) + 1) {
    done = action(path, bytes, room);
  }
  free(paths);
  return done;
}

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const size_t room = strtoull(argv[3], NULL, 10);
  char* const bytes = malloc(room);
  const bool done = bytes != NULL && for_each(argv[1], read_input, bytes, room) &&
                    for_each(argv[2], write_page, bytes, room);
  free(bytes);
  return done ? 0 : 1;
}
