# shellcheck shell=bash
# What toplist-thumbnail makes of all kinds of pictures, by itself. Expects $here, $tools, $scratch and
# $pictures.

# thumbnail INPUT SIZE OUTPUT: as a harvest runs it; "-" for no size.
thumbnail() {
  local words=("$1" "$2" "$3")
  [[ $2 != - ]] || words=("$1" "$3")
  env -i PATH="${thumbnail_path:-/usr/bin:/bin}" "$tools/toplist-thumbnail" "${words[@]}"
}

# The size of the JPEG at a path and whether it is the red picture that was made into it; "-" when
# nothing is there.
thumbnail_at() {
  if [[ ! -e $1 ]]; then
    echo -
  else
    identify -format '%wx%h, red: %[fx:mean.r>mean.b]' jpeg:- <"$1" 2>&1 || true
  fi
}

# The tool is run in the folder of its files, so it gets names as the table has them. At INPUT stands
# another partner's picture.
check_row() {
  local picture=$1 size=$2 outcome=$3 name=$4 what output status=0
  what="thumbnail of $1, $2, as $4"
  cp "$pictures/$picture" "$folder/$name"
  output=$(cd "$folder" && thumbnail other.jpg "$size" "$name" 2>"$scratch/messages") || status=$?
  case $outcome in
    usage)
      check "$what: status" 2 "$status"
      cmp -s "$pictures/$picture" "$folder/$name" || check "$what" untouched changed
      ;;
    -)
      check "$what: status" 1 "$status"
      check "$what" - "$(thumbnail_at "$folder/$name")"
      ;;
    *)
      check "$what: status" 0 "$status"
      check "$what" "$outcome, red: 1" "$(thumbnail_at "$folder/$name")"
      ;;
  esac
  check "$what: standard output" "" "$output"
  rm -f "$folder/$name"
  check "$what: other files" other.jpg "$(ls -A "$folder")"
}

check_table() {
  local row
  while read -r -a row; do check_row "${row[@]}"; done < <(rows_of "$here/thumbnails")
  cmp -s "$pictures/other.jpg" "$folder/other.jpg" || check "thumbnails: INPUT" untouched changed
}

# A web server must be able to read what the run's user has made.
check_mode() {
  cp "$pictures/photo.jpg" "$folder/photo.jpg"
  thumbnail missing.jpg - "$folder/photo.jpg"
  check "thumbnail: mode" 644 "$(stat -c %a "$folder/photo.jpg")"
}

check_without_imagemagick() {
  local commands=$scratch/commands name thumbnail_path status=0
  mkdir "$commands"
  for name in sh od wc tail tr mktemp rm; do ln -s "$(command -v "$name")" "$commands/"; done
  thumbnail_path=$commands
  cp "$pictures/photo.jpg" "$folder/photo.jpg"
  thumbnail missing.jpg - "$folder/photo.jpg" 2>"$scratch/messages" || status=$?
  check "thumbnail without ImageMagick: status" 1 "$status"
  check "thumbnail without ImageMagick: message" 1 "$(grep -c 'ImageMagick' "$scratch/messages")"
  check "thumbnail without ImageMagick" - "$(thumbnail_at "$folder/photo.jpg")"
}

check_missing_output() {
  local status=0
  thumbnail other.jpg - "$folder/missing.jpg" 2>"$scratch/messages" || status=$?
  check "thumbnail of nothing: status" 1 "$status"
  check "thumbnail of nothing: files" other.jpg "$(ls -A "$folder")"
}

check_thumbnails() {
  local folder=$scratch/thumbnails
  mkdir "$folder"
  cp "$pictures/other.jpg" "$folder/other.jpg"
  check_table
  check_mode
  check_without_imagemagick
  check_missing_output
}
