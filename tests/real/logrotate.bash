# shellcheck shell=bash
# The example for logrotate as it stands, but for the site's path. Only root can try it: the site is
# www-data's, as the example says. Expects $here, $program, $companion and $scratch.

# Rotates as a week later; logrotate is expected to say nothing.
rotate() {
  check "logrotate" "" \
    "$(logrotate --force --state "$scratch/logrotate.state" "$scratch/logrotate.conf" 2>&1)"
}

fail_runs() {
  local count
  for ((count = 0; count < $2; count++)); do
    (cd "$1" && runuser -u www-data -- "$program" run)
  done
}

shown_lines() {
  "$companion" show log --site "$1" | tail -n +2 | wc -l
}

check_log_rotation() {
  local site=$scratch/rotated-site log=$scratch/rotated-site/l/sys/sys.log
  "$companion" init "$site" >/dev/null # without trades, every run logs a line
  chown -R www-data: "$site"
  sed "s#/srv/mysite#$site#" "$here/../../packaging/toplist.logrotate" >"$scratch/logrotate.conf"
  chmod 644 "$scratch/logrotate.conf"
  rotate
  check "a log that was not there" net "$(ls "$site/l/sys")"
  fail_runs "$site" 1
  rotate
  check "the new log" "644 www-data:www-data 0" "$(stat -c '%a %U:%G %s' "$log")"
  check "lines of the new log" 0 "$(shown_lines "$site")"
  fail_runs "$site" 2
  check "lines after" 2 "$(shown_lines "$site")"
  check "lines before" 1 "$(wc -l <"$log.1")"
  rotate
  check "lines before, packed" 1 "$(zcat "$log.2.gz" | wc -l)"
  check "who may read them" "644 www-data:www-data" "$(stat -c '%a %U:%G' "$log.2.gz")"
  rotate
  check "an empty log is not rotated" 2 "$(wc -l <"$log.1")"
}
