# shellcheck shell=bash
# Sourced by the other scripts. Installs the packages that a build needs.
# shellcheck disable=SC2034

# need_packages PACKAGE... - installs those Debian packages that are missing. When it cannot, says
# in one line what to install and ends the script with status 2.
need_packages() {
  local missing=() package
  for package in "$@"; do
    if [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" != installed ]; then
      missing+=("$package")
    fi
  done
  [ ${#missing[@]} -eq 0 ] && return

  local as_root=()
  if ! command -v apt-get >/dev/null; then
    give_up "this is not Debian" "$@"
  elif [ "$(sed -n 's/^VERSION_ID="\?\([0-9]*\).*/\1/p' /etc/os-release)" -lt 12 ] 2>/dev/null; then
    give_up "this is older than Debian 12, which lacks some of them" "${missing[@]}"
  elif [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || give_up "not root, and there is no sudo" "${missing[@]}"
    as_root=(sudo)
  fi
  echo "Installing with apt-get${as_root[*]:+, as root through ${as_root[*]}}: ${missing[*]}"
  if ! "${as_root[@]}" apt-get update -qq ||
    ! "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
      apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null; then
    give_up "apt-get failed" "${missing[@]}"
  fi
}

give_up() {
  local reason=$1
  shift
  echo "${0##*/}: $reason: install these Debian packages first: $*" >&2
  exit 2
}

build_packages=(g++ cmake ninja-build pkg-config libxml2-dev uuid-dev
  libutfcpp-dev libcli11-dev nlohmann-json3-dev zlib1g-dev
  libxmlsec1-dev libssl-dev opensaml-schemas xmltooling-schemas xsltproc)
test_packages=(libgtest-dev liblzma-dev libcpp-httplib-dev clang libclang-rt-dev abigail-tools strace
  valgrind locales libxml2-utils xmlsec1 openssl libsaml-dev python3-lasso python3-pysaml2)
