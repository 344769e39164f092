# For scripts that let other people's programs load the bundle: a home of their own in $work, and of all plug-ins
# of the machine the one in $bundle.

fail() {
  echo "error: $*" >&2
  exit 1
}

see_bundle_alone() {
  export HOME=$work LC_ALL=C LV2_PATH=$work/lv2
  unset XDG_CONFIG_HOME
  mkdir "$work/lv2"
  ln -s "$bundle" "$work/lv2/corvane.lv2"
  local standard
  for standard in /usr/lib/lv2/*.lv2; do
    grep -q 'lv2:Plugin' "$standard/manifest.ttl" || ln -s "$standard" "$work/lv2/"
  done
  cd "$work" || exit 1
}
