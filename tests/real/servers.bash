# shellcheck shell=bash
# Web servers as Debian configures them. Each function takes a folder and addresses and becomes the
# server, in the foreground; "www" in the folder is the site, all else that it writes is there as well.
# Changed in the configuration are where it listens, where its files are, and what TLS takes: the
# folders "/secure/" and "/misnamed/" move to https, as whole sites do today, and nginx sends what is
# below "/slow/" a byte a second. Expects $certificate, a file that holds a certificate and its key.

moved_folders='^/(secure|misnamed)/'

become_nginx() {
  local folder=$1 && shift
  cp -r /etc/nginx "$folder/conf"
  rm -f "$folder"/conf/{sites-enabled,modules-enabled,conf.d}/*
  sed -i -e "s#/etc/nginx/#$folder/conf/#; s#/run/nginx.pid#$folder/pid#" \
    -e "s#/var/log/nginx/#$folder/log/#" "$folder/conf/nginx.conf"
  {
    printf 'listen %s:80 default_server;\n' "$@"
    printf 'listen %s:443 ssl;\n' "$@"
    echo "ssl_certificate $certificate; ssl_certificate_key $certificate;"
    echo 'location /slow/ { limit_rate 1; }'
    echo "if (\$scheme = http) { rewrite $moved_folders https://\$host\$request_uri permanent; }"
  } >"$folder/conf/listen.conf"
  sed -e '/^\tlisten \[::\]:80/d; '"s#^\tlisten 80 .*#include $folder/conf/listen.conf;#" \
    -e "s#/var/www/html#$folder/www#" "$folder/conf/sites-available/default" \
    >"$folder/conf/sites-enabled/default"
  exec nginx -c "$folder/conf/nginx.conf" -e "$folder/log/error.log" -g 'daemon off;'
}

become_apache2() {
  local folder=$1 file && shift
  cp -r /etc/apache2 "$folder/conf"
  for file in ssl.load ssl.conf socache_shmcb.load; do
    ln -sf "../mods-available/$file" "$folder/conf/mods-enabled/"
  done
  printf 'Listen %s:80\n' "$@" >"$folder/conf/ports.conf"
  printf 'Listen %s:443\n' "$@" >>"$folder/conf/ports.conf"
  sed -i "s#/var/www/#$folder/www/#" "$folder/conf/apache2.conf"
  rm -f "$folder"/conf/sites-enabled/*
  for file in 000-default.conf default-ssl.conf; do
    sed -e "s#/var/www/html#$folder/www#; s#/etc/ssl/.*/ssl-cert-snakeoil.*#$certificate#" \
      "$folder/conf/sites-available/$file" >"$folder/conf/sites-enabled/$file"
  done
  sed -i "s#^</VirtualHost>#<LocationMatch \"$moved_folders\">\n\
Redirect permanent \"https://%{HTTP_HOST}%{REQUEST_URI}\"\n</LocationMatch>\n&#" \
    "$folder/conf/sites-enabled/000-default.conf"
  # What /etc/apache2/envvars tells the service.
  export APACHE_RUN_USER=www-data APACHE_RUN_GROUP=www-data APACHE_PID_FILE=$folder/pid \
    APACHE_RUN_DIR=$folder APACHE_LOCK_DIR=$folder APACHE_LOG_DIR=$folder/log
  exec apache2 -d "$folder/conf" -C 'ServerName localhost' -D FOREGROUND
}

# shellcheck disable=SC2016  # the variables are the server's own
become_lighttpd() {
  local folder=$1 && shift
  cp -r /etc/lighttpd "$folder/conf"
  chmod a+w "$folder/log" # it opens its log as www-data
  sed -i -e "s#/etc/lighttpd/#$folder/conf/#; s#/var/www/html#$folder/www#; s#/run/#$folder/#" \
    -e "s#/var/log/lighttpd/#$folder/log/#; s#/var/cache/lighttpd/uploads#$folder#" \
    -e '/use-ipv6.pl/d' "$folder/conf/lighttpd.conf"
  {
    echo "server.bind = \"$1\""
    printf '$SERVER["socket"] == "%s:80" {}\n' "${@:2}"
    printf '$SERVER["socket"] == "%s:443" { ssl.engine = "enable" }\n' "$@"
    echo 'server.modules += ("mod_openssl")'
    echo "ssl.pemfile = \"$certificate\""
    echo '$HTTP["scheme"] == "http" { $HTTP["url"] =~ "'"$moved_folders"'" {'
    echo 'url.redirect = ("" => "https://${url.authority}${url.path}${qsa}") } }'
  } >>"$folder/conf/lighttpd.conf"
  exec lighttpd -D -f "$folder/conf/lighttpd.conf"
}
