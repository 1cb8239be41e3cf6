#!/usr/bin/env bash
# Run as root in a clean root, beside the packages: each of them comes, works, comes again and goes, and
# leaves nothing but the user's files.
set -euo pipefail
cd "$(dirname "$0")"

# Folders change with what is in them; the package manager keeps records of its own.
everything() {
    find / -xdev -regextype egrep -regex '/(proc|sys|dev|tmp|home|var/(lib/dpkg|log|cache))' -prune \
        -o -type d -printf '%p %M %u\n' -o -printf '%p %M %u %s %t %l\n' | sort
}
apt_get() { DEBIAN_FRONTEND=noninteractive apt-get "$@" -qq -y --no-install-recommends >/dev/null; }
user() { su --shell /bin/bash --command "set -e; cd; $1" tester; }

use_vornupdater() {
    for program in $(dpkg -L vornupdater | grep '^/usr/bin/.'); do
        user "$program --help" >/dev/null
    done
    user "vornupdater --version"
    status=0
    user "QT_QPA_PLATFORM=offscreen timeout 5 vornupdater" || status=$?
    [ $status -eq 124 ] || { echo "The window ended by itself: $status" >&2 && exit 1; }
    user "vornsim sample-firmware .cache/VornUpdate2; sha256sum .cache/VornUpdate2/* >kept"
    command -v vornupdater-cli || return 0
    # Only root may open a terminal here.
    timeout 90 vornsim device --dir /tmp --name usbserial-1 --exit-after 1 >/tmp/device &
    timeout 20 sh -c 'until grep -q ready /tmp/device; do sleep 0.1; done'
    XDG_CACHE_HOME=~tester/.cache timeout 60 vornupdater-cli --device-dir /tmp update --newest
    wait $!
}
use_libvornserial-dev() {
    user "g++ -std=c++20 /usr/share/doc/libvornserial-dev/examples/serial-example.cpp -o example \
        \$(pkg-config --cflags --libs vorn-serial)"
}

useradd --create-home tester
apt_get install g++
for package in *.deb; do
    apt_get satisfy "$(dpkg-deb -f "$package" Depends)"
done
# What fails before this is the network's doing.
echo "In a clean root:"
for package in vornupdater libvornserial-dev; do
    everything >/tmp/before
    dpkg --install ${package}_*.deb
    use_$package
    dpkg --install ${package}_*.deb
    dpkg --remove $package
    dpkg --purge $package
    everything | diff /tmp/before -
done
user "sha256sum --quiet -c kept"
