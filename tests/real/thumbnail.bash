# shellcheck shell=bash
# What toplist-thumbnail makes of all kinds of pictures, by itself. Expects $here, $tools, $scratch and
# $pictures.

# The environment of every call; a check may change it.
tool_path=/usr/bin:/bin
private=$scratch/private # where the tool makes its private folders
launcher=()              # what precedes the command

# run_tool WORD...: in the folder of its files, so that it gets names as the tables have them. Fills
# $status, $output and $message.
run_tool() {
  status=0
  output=$(cd "$folder" && "${launcher[@]}" env -i PATH="$tool_path" TMPDIR="$private" \
    "$tools/toplist-thumbnail" "$@" 2>"$scratch/messages") || status=$?
  message=$(<"$scratch/messages")
}

# The size of the JPEG at a path and whether it is the red picture that was made into it; "-" when
# nothing is there.
thumbnail_at() {
  if [[ ! -e $1 ]]; then
    echo -
  elif [[ ! -s $1 ]]; then
    echo empty
  else
    identify -format '%wx%h, red: %[fx:mean.r>mean.b]' jpeg:- <"$1" 2>&1 || true
  fi
}

# check_outcome WHAT OUTCOME NAME: what a call left, which is one of the outcomes in the table
# "thumbnails" or "empty". Removes the thumbnail.
check_outcome() {
  local what=$1 expected_status=0 expected=$2
  case $2 in
    - | empty) expected_status=1 ;;
    wrong) expected_status=2 expected=- ;;
    *) expected="$2, red: 1" ;;
  esac
  check "$what: status" "$expected_status" "$status"
  check "$what" "$expected" "$(thumbnail_at "$folder/$3")"
  check "$what: standard output" "" "$output"
  rm -f "$folder/$3"
  check "$what: other files" "$others" "$(ls -A "$folder")"
  check "$what: private folders" "" "$(ls -A "$private")"
}

# INPUT is another partner's picture.
check_row() {
  local picture=$1 words=(other.jpg "$2" "$4")
  [[ $2 != - ]] || words=(other.jpg "$4")
  cp "$pictures/$picture" "$folder/$4"
  run_tool "${words[@]}"
  check_outcome "thumbnail of $1, $2, as $4" "$3" "$4"
}

check_table() {
  local row
  while read -r -a row; do check_row "${row[@]}"; done < <(rows_of "$here/thumbnails")
  cmp -s "$pictures/other.jpg" "$folder/other.jpg" || check "thumbnails: INPUT" untouched changed
}

# check_photo WHAT OUTCOME [WORD...]: the words stand between INPUT and OUTPUT.
check_photo() {
  local what=$1 outcome=$2
  shift 2
  cp "$pictures/photo.jpg" "$folder/photo.jpg"
  run_tool other.jpg "$@" photo.jpg
  check_outcome "thumbnail $what" "$outcome" photo.jpg
}

check_words() {
  check_photo "with an option" wrong -resize 240x180
  check_photo "with two sizes" wrong 240x180 240x180
  check_photo "with an empty size" wrong ""
  cp "$pictures/photo.jpg" "$folder/photo.jpg"
  run_tool photo.jpg
  check "thumbnail of one word: status" 2 "$status"
  check "thumbnail of one word: usage" 1 "$(grep -c '^usage: ' "$scratch/messages")"
  cmp -s "$pictures/photo.jpg" "$folder/photo.jpg" || check "thumbnail of one word" untouched changed
  rm "$folder/photo.jpg"
  run_tool other.jpg missing.jpg
  check_outcome "thumbnail of nothing" - missing.jpg
}

# A web server must be able to read what the run's user has made.
check_mode() {
  cp "$pictures/photo.jpg" "$folder/photo.jpg"
  run_tool missing.jpg photo.jpg
  check "thumbnail: mode" 644 "$(stat -c %a "$folder/photo.jpg")"
  rm "$folder/photo.jpg"
}

# The bytes must go even if they have a second name.
check_link() {
  cp "$pictures/noise.jpg" "$scratch/target"
  ln -s "$scratch/target" "$folder/photo.jpg"
  run_tool other.jpg photo.jpg
  check_outcome "thumbnail of a link" - photo.jpg
  check "thumbnail of a link: its target" empty "$(thumbnail_at "$scratch/target")"
}

# stand_in COMMAND...: what runs in the place of ImageMagick.
stand_in() {
  printf '#!/bin/sh\n%s\n' "$*" >"$scratch/commands/magick"
  chmod +x "$scratch/commands/magick"
}

check_stand_ins() {
  local tool_path=$scratch/commands:$tool_path
  stand_in cat "$pictures/photo.jpg"
  check_photo "of a wrong size" -
  stand_in echo text
  check_photo "that is text" -
  stand_in "convert $pictures/photo.jpg -resize 240x180! jpeg:- | head -c 4000"
  check_photo "that is cut short" -
  stand_in "convert $pictures/photo.jpg -resize 240x180! jpeg:-; exit 1"
  check_photo "by a tool that fails" -
  stand_in "convert $pictures/photo.jpg -resize 240x180! -interlace plane jpeg:-"
  check_photo "by a tool that works" 240x180

  # As systemd and timeout end a harvest: all of its processes.
  local launcher=(setsid --wait)
  stand_in 'kill -TERM 0; read -r line'
  check_photo "that is stopped" -
  stand_in 'kill -KILL 0'
  cp "$pictures/photo.jpg" "$folder/photo.jpg"
  run_tool other.jpg photo.jpg
  check "thumbnail that is killed" empty "$(thumbnail_at "$folder/photo.jpg")"
  rm "$folder/photo.jpg"
  check "thumbnail that is killed: other files" "$others" "$(ls -A "$folder")"
  rm -r "${private:?}"/*
}

check_lacks() {
  local name tool_path private=$private launcher
  mkdir "$scratch/few-commands"
  for name in sh od wc tail tr mktemp rm cp; do ln -s "$(command -v "$name")" "$scratch/few-commands/"; done
  tool_path=$scratch/few-commands
  check_photo "without ImageMagick" -
  check "thumbnail without ImageMagick: message" 1 "$(grep -c 'ImageMagick is not installed' <<<"$message")"
  tool_path=/usr/bin:/bin
  # shellcheck disable=SC2016  # for the shell that sets the limit
  launcher=(sh -c 'ulimit -f 8 && exec "$@"' sh)
  check_photo "without room for a copy" -
  launcher=()
  private=$scratch/missing
  cp "$pictures/photo.jpg" "$folder/photo.jpg"
  run_tool other.jpg photo.jpg
  check "thumbnail without a private folder" "1 -" "$status $(thumbnail_at "$folder/photo.jpg")"
}

# run_in_read_only_folder PICTURE MODE: in a folder that the tool's user cannot write.
run_in_read_only_folder() {
  cp "$pictures/$1" "$folder/photo.jpg"
  [[ ${#launcher[@]} -eq 0 ]] || chown www-data "$folder/photo.jpg"
  chmod "$2" "$folder/photo.jpg"
  chmod a-w "$folder"
  run_tool other.jpg photo.jpg
  chmod u+w "$folder"
}

check_read_only_folder() {
  local launcher=() tools=$tools
  if [[ $EUID -eq 0 ]]; then
    launcher=(runuser -u www-data --)
    cp -r "$tools" "$scratch/tools" # where www-data can read it
    tools=$scratch/tools
    chown www-data "$private"
  fi
  run_in_read_only_folder photo.jpg 644
  check_outcome "thumbnail in a read-only folder" 240x180 photo.jpg
  run_in_read_only_folder noise.jpg 644
  check_outcome "thumbnail of noise in a read-only folder" empty photo.jpg
  run_in_read_only_folder noise.jpg 444
  check "thumbnail of what cannot be changed: status" 1 "$status"
  check "thumbnail of what cannot be changed: message" 1 "$(grep -c 'Remove it' <<<"$message")"
  rm -f "$folder/photo.jpg"
}

check_thumbnails() {
  local folder=$scratch/thumbnails others status output message
  mkdir "$folder" "$private" "$scratch/commands"
  # The names are those of formats, which must not make them pictures to read.
  for others in other.jpg jpeg:- png:- 'jpeg:-[0]'; do cp "$pictures/other.jpg" "$folder/$others"; done
  others=$(ls -A "$folder")
  check_table
  check_words
  check_mode
  check_link
  check_stand_ins
  check_lacks
  check_read_only_folder
}
