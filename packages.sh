#!/bin/sh
# packages.sh LIST: installs what the list names and this machine lacks; silent when nothing is missing.
set -eu
cd "$(dirname "$0")"
missing=""
for package in $(sed -e 's/#.*//' "$1"); do
  dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || missing="$missing $package"
done
[ -z "$missing" ] && exit 0
run=""
[ "$(id -u)" -eq 0 ] || run="sudo"
echo "installing:$missing"
$run apt-get update -qq
# shellcheck disable=SC2086  # one word a package is meant
# behind sudo, which keeps no such variable of its caller
$run env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
