# SPDX-License-Identifier: GPL-2.0-or-later
# Sourced by the scripts that take packages from the machine's own sources without installing them: apt with lists and
# archives in a scratch folder, so that the machine's configuration stays as it is.

say() { echo "${0##*/}: $*"; }
fail() {
  echo "${0##*/}: error: $1" >&2
  echo "${0##*/}: remedy: $2" >&2
  exit 1
}

# write_entries FOLDER TYPE: the package sources of the machine, as TYPE (deb or deb-src). Both forms are read: one-line
# .list files and deb822 .sources files. Entries of disc drives and disabled ones are left out.
write_entries() {
  local to=$1 type=$2 file name
  mkdir -p "$to"
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -r "$file" ] || continue
    name=$(basename "$file" .list)
    sed -nE "s/^[[:space:]]*deb(-src)?[[:space:]]+/$type /p" "$file" | grep -v ' cdrom:' | sort -u \
      >"$to/${name//[^A-Za-z0-9_-]/_}-one-line.list" || true
  done
  for file in /etc/apt/sources.list.d/*.sources; do
    [ -r "$file" ] || continue
    sed -E "s/^[Tt]ypes:.*/Types: $type/" "$file" >"$to/$(basename "$file")"
  done
}

# apt_folders FOLDER TYPE: makes the folders. apt_in_folders FOLDER ARGUMENT...: runs apt-get there; the downloads are in
# FOLDER/download (sources) or FOLDER/cache/archives (packages).
apt_folders() {
  mkdir -p "$1/download" "$1/lists/partial" "$1/cache/archives/partial"
  write_entries "$1/entries" "$2"
}
apt_in_folders() {
  local folder=$1
  shift
  (cd "$folder/download" && apt-get -q -o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$folder/entries" \
    -o Dir::State::Lists="$folder/lists" -o Dir::Cache="$folder/cache" -o APT::Sandbox::User=root "$@")
}
