# shellcheck shell=bash
# Whole harvests among real web servers, with real downloaders and the real image tool: at every
# server by every method, each time of all partners in the table "trades". Expects $here, $program,
# $tools, $scratch and $pictures.

packaging=$here/../../packaging # what operators get
certificate=$scratch/certificate.pem
# shellcheck source-path=SCRIPTDIR source=servers.bash
source "$here/servers.bash"

run_limit=60 # seconds; a run takes 2, a single wait for nginx to end a connection 75
record_bytes=996
never_visited=11 # trades at the start of a database

# Each server has a network of its own, in which the last byte is the trade's number.
declare -A networks=([nginx]=127.0.81 [apache2]=127.0.82 [lighttpd]=127.0.83)
server_pids=()

# Of the partner of this domain the address is told by the table of names, as if by the domain name
# system; all others are visited by their numbers.
named_partner=named.example
names=$scratch/hosts
as_named=() # what comes in front of a command that is to know the name; nothing where that can't be

# Gives a command a table of names of its own, where this system lets us.
offer_names() {
  # shellcheck disable=SC2016  # for the shell behind unshare
  local own_names=(unshare --mount --map-root-user
    sh -c 'mount --bind "$0" /etc/hosts && exec "$@"' "$names")
  echo "127.0.0.1 localhost" >"$names"
  if "${own_names[@]}" true 2>/dev/null; then
    as_named=("${own_names[@]}")
  else
    echo "skipped: a partner visited by its name, as this system grants no table of names of our own"
  fi
}

# partners SERVER COMMAND...: runs the command for each partner at the server, whose number, host (the
# address of its server), name, url and row of the table it finds in variables.
partners() {
  local server=$1 number=0 host name url domain address page picture outcome=()
  shift
  while read -r domain address page picture 'outcome[0]' 'outcome[1]' 'outcome[3]'; do
    number=$((number + 1))
    host=${networks[$server]}.$number
    domain=${domain/#HOST/$host}
    address=${address//N/$number}
    name=$host
    if [[ $domain == "$named_partner" ]]; then
      [[ ${#as_named[@]} -gt 0 ]] || continue
      name=$domain
    fi
    url=http://$name$address
    "$@"
  done < <(rows_of "$here/trades")
}

print_host() {
  echo "$host"
}

add_name() {
  [[ $name == "$host" ]] || echo "$host $name" >"$names"
}

print_certified_host() {
  [[ $address == /misnamed/* ]] || echo "IP:$host"
}

# For all partners but those whose certificate is to be of another name.
make_certificate() {
  local server names
  names=$(for server in "${!networks[@]}"; do partners "$server" print_certified_host; done)
  openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 \
    -subj '/CN=partners' -addext "subjectAltName=${names//$'\n'/,}" \
    -keyout "$scratch/key" -out "$certificate" 2>"$scratch/messages"
  cat "$scratch/key" >>"$certificate"
}

# add_page WWW
add_page() {
  local file=$1${address%%\?*}
  [[ $page != - ]] || return 0
  [[ $file == *.html ]] || file+=/index.html
  mkdir -p "${file%/*}"
  sed "s#@HOST@#$name#g; s#@PICTURE@#$picture#g" "$here/pages/$page.html" >"$file"
}

# lay_out_partners SERVER WWW
lay_out_partners() {
  local www=$2
  mkdir -p "$www/media/10023" "$www/secure"
  cp -l "$pictures"/* "$www/media/10023"
  ln -s ../media "$www/secure/media"
  partners "$1" add_page "$www"
}

# Why no server can be started; nothing when it can.
obstacle() {
  if [[ $EUID -ne 0 && $(</proc/sys/net/ipv4/ip_unprivileged_port_start) -gt 80 ]]; then
    echo 'only root may listen on port 80'
  elif answers "${networks[nginx]}.1"; then
    echo 'another server listens on port 80 of all addresses'
  fi
}

answers() {
  (exec 3<>"/dev/tcp/$1/80") 2>/dev/null
}

# Lays out what the server needs, the trade database of its partners too, and starts it.
start_server() {
  local server=$1 folder=$scratch/$1 hosts
  mapfile -t hosts < <(partners "$server" print_host)
  mkdir -p "$folder/log"
  lay_out_partners "$server" "$folder/www"
  partners "$server" add_trade "$folder/index"
  partners "$server" add_name
  ("become_$server" "$folder" "${hosts[@]}") >"$folder/log/messages" 2>&1 &
  server_pids+=($!)
  until answers "${hosts[0]}"; do
    kill -0 "${server_pids[-1]}" 2>/dev/null || {
      echo "$server does not start:"
      cat "$folder"/log/*
      return 1
    }
    sleep 0.1
  done
}

stop_servers() {
  [[ ${#server_pids[@]} -eq 0 ]] || kill "${server_pids[@]}" 2>/dev/null || true
  wait
}

# write_field FILE OFFSET TEXT: what is not written of a record stays zero.
write_field() {
  printf '%s' "$3" | dd of="$1" bs=1 seek="$2" conv=notrunc status=none
}

# add_trade DATABASE
add_trade() {
  local record=$((record_bytes * (never_visited + number - 1)))
  write_field "$1" $((record + 4)) "$domain"
  write_field "$1" $((record + 80)) "$url"
  truncate -s $((record + record_bytes)) "$1"
}

# A site in which nothing but the harvest happens: none of its trades is active.
lay_out_site() {
  local site=$1 server=$2 method=$3
  mkdir -p "$site"/{d/t,d/tl,l/sys/net,l/thumbs}
  cp "$scratch/$server/index" "$site/d/t/index"
  : >"$site/d/tl/tl.a1"
  printf '%s\n' l/thumbs/ toplist-thumbnail 240x180 0 "$method" 1 1 >"$site/d/tl/vantaig"
}

# What the image tool makes of a picture, as a file. A harvest gives the same, or another picture.
thumbnail_of() {
  local file=$scratch/expected/$1
  mkdir -p "$scratch/expected"
  if [[ ! -e $file ]]; then
    cp "$pictures/$1" "$file"
    "$tools/toplist-thumbnail" "$1" 240x180 "$file"
  fi
  echo "$file"
}

# check_partner METHOD THUMBS: takes the thumbnail away.
check_partner() {
  local expected=none found=none thumbnail=$2/$domain.jpg
  case ${outcome[$1]} in
    all | "$server") expected=thumbnail ;;
  esac
  if [[ -e $thumbnail ]]; then
    found=thumbnail
    cmp -s "$thumbnail" "$(thumbnail_of "$picture")" || found='another picture'
  fi
  check "$server, method $1, $url: $page $picture" "$expected" "$found"
  rm -f "$thumbnail"
}

files_in() {
  (cd "$1" && find . | sort)
}

check_harvest() {
  local server=$1 method=$2 site=$scratch/site-$1-$2 files what="$1, method $2" status=0
  lay_out_site "$site" "$server" "$method"
  files=$(files_in "$site")
  (
    cd "$site"
    exec "${as_named[@]}" env -i PATH="$tools:/usr/bin:/bin" CURL_HOME="$scratch" CURL_CA_BUNDLE="$certificate" \
      WGETRC="$scratch/wgetrc" timeout "$run_limit" "$program" run >"$site.out" 2>"$site.err"
  ) || status=$?
  check "$what: status (124: not done in $run_limit s)" 0 "$status"
  check "$what: standard output" "" "$(<"$site.out")"
  partners "$server" check_partner "$method" "$site/l/thumbs"
  check "$what: files of the site" "$files" "$(files_in "$site")"
}

# harvest_with_slow_partner METHOD: the third of 24 partners sends a byte a second. By itself wget would
# wait for it until the run is ended, and the trades behind its group of eight would be lost.
harvest_with_slow_partner() {
  local site=$scratch/slow-$1 number domain url
  lay_out_site "$site" nginx "$1"
  rm "$site/d/t/index"
  for number in {1..24}; do
    domain=${networks[nginx]}.$number
    url=http://$domain/1.html
    [[ $number -ne 3 ]] || url=http://$domain/slow/1.html
    add_trade "$site/d/t/index"
  done
  (cd "$site" && env -i PATH="$scratch/limited:$tools:/usr/bin:/bin" CURL_HOME="$scratch/limited" \
    timeout "$run_limit" "$program" run >"$site.out" 2>"$site.err")
}

# With the limits of time of the units, but shorter.
check_slow_partner() {
  local method limit=4 pids=()
  mkdir "$scratch/limited" "$scratch/nginx/www/slow"
  cp "$scratch/nginx/www/1.html" "$scratch/nginx/www/slow/1.html"
  sed "s/ 30 wget / $limit wget /" "$packaging/wget" >"$scratch/limited/wget"
  chmod +x "$scratch/limited/wget"
  sed "s/^max-time = 30$/max-time = $limit/" "$packaging/curlrc" >"$scratch/limited/.curlrc"
  for method in 1 3; do
    harvest_with_slow_partner "$method" &
    pids+=($!)
  done
  wait "${pids[@]}" || true
  for method in 1 3; do
    check "thumbnails beside a slow partner, method $method" 23 "$(files_in "$scratch/slow-$method/l/thumbs" | grep -c jpg)"
  done
}

check_harvests() {
  local server method
  offer_names
  make_certificate
  echo "ca_certificate = $certificate" >"$scratch/wgetrc"
  cp "$packaging/curlrc" "$scratch/.curlrc"
  for server in "${!networks[@]}"; do
    start_server "$server"
    for method in 0 1 3; do check_harvest "$server" "$method"; done
  done
  check_slow_partner
}
