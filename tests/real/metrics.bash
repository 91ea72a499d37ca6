# shellcheck shell=bash
# The metrics as Prometheus' own tool reads them. Expects $program, $companion and $scratch.

# check_metrics STATUS WHAT: the exit status for $site, and that the tool has nothing to say.
check_metrics() {
  local status=0
  "$companion" status --site "$site" --prometheus >"$scratch/metrics" || status=$?
  check "status, $2" "$1" "$status"
  check "promtool, $2" "" "$(promtool check metrics <"$scratch/metrics" 2>&1)"
}

check_all_metrics() {
  local site=$scratch/metrics-site page
  mkdir "$site"
  check_metrics 1 "of an empty folder"
  "$companion" sample "$site" >/dev/null
  check_metrics 1 "before the first run"
  (cd "$site" && "$program" run)
  check_metrics 0 "of a sample site"
  for page in 'a"b.html' 'c\d.html' $'e\nf.html' $'tab\t.html' $'latin\xe9.html' $'latin\xe8.html' \
    'x{page="y"} 1' 'backslash\' '\n.html' 'größe.html' ''; do
    printf 'list|index.tpl|0|%s|16|2||0|0|\n' "$page" >>"$site/d/tl/tl"
  done
  (cd "$site" && "$program" run)
  check_metrics 1 "of odd names of pages"
  check "pages in the metrics" 14 "$(grep -c '^toplist_page_age_seconds{' "$scratch/metrics")"
  rm "$site/d/t/sum"
  check_metrics 1 "of a broken site"
}
