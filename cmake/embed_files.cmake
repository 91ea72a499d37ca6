# embed_files(TARGET FOLDER): compiles the files below FOLDER, except README.md and partner/, into TARGET,
# which then has the function that toplistctl/lib/new_site/embedded_files.h declares. The assembler includes
# the bytes, so this costs no time and works for every processor.
function(embed_files target folder)
  file(GLOB_RECURSE paths CONFIGURE_DEPENDS LIST_DIRECTORIES false RELATIVE ${folder} ${folder}/*)
  list(FILTER paths EXCLUDE REGEX "^(README.md|partner/)")
  list(SORT paths)

  # Each file ends where the next label stands.
  set(count 0)
  set(labels "")
  set(bytes "")
  set(table "")
  foreach(path IN LISTS paths)
    math(EXPR next "${count} + 1")
    string(APPEND labels "extern const char toplist_file_${count}[];\n")
    string(APPEND bytes "toplist_file_${count}:\n.incbin \"${folder}/${path}\"\n")
    string(APPEND table "    {\"${path}\", toplist_file_${count}, toplist_file_${next}},\n")
    set(count ${next})
  endforeach()
  string(APPEND labels "extern const char toplist_file_${count}[];\n")
  string(APPEND bytes "toplist_file_${count}:\n")

  set(source ${CMAKE_CURRENT_BINARY_DIR}/embedded_files.cpp)
  file(CONFIGURE OUTPUT ${source} @ONLY CONTENT [[
// Made by cmake/embed_files.cmake.
#include "toplistctl/lib/new_site/embedded_files.h"

asm(R"(.pushsection .rodata
@bytes@.popsection
)");

extern "C" {
@labels@}

namespace toplist::ctl {

std::span<const EmbeddedFile> embedded_files() {
  static constexpr EmbeddedFile kFiles[] = {
@table@  };
  return kFiles;
}

}  // namespace toplist::ctl
]])
  list(TRANSFORM paths PREPEND ${folder}/)
  set_source_files_properties(${source} PROPERTIES OBJECT_DEPENDS "${paths}")
  target_sources(${target} PRIVATE ${source})
endfunction()
