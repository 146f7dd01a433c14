#!/bin/bash
# Runs inside the new system that packaging/check_packages.sh made: installs the packages that lie beside
# this script, uses what they hold, removes them and looks for what they left.
cd "$(dirname "$0")" || exit 1
step() { printf 'packages: %s\n' "$*"; }
fail() { printf 'packages: FAILED: %s\n' "$*" >&2 && exit 1; }
quietly() { "$@" >log 2>&1 || { tail -n 20 log >&2 && fail "$*"; }; }

names() {
    find / -xdev \( -path /proc -o -path /dev -o -path /try \) -prune -o \
        \( -iname '*tessary*' -o -iname '*glutmenu*' \) -print
}
mentions() { grep -rlIi -e tessary -e glutmenu /usr/share /usr/lib/x86_64-linux-gnu/pkgconfig /etc /var/lib 2>/dev/null; }

[[ -z $(names) ]] || fail "the system is not new: $(names)"
export DEBIAN_FRONTEND=noninteractive
quietly apt-get update
quietly apt-get install -y --no-install-recommends ./*.deb
step "installed"

install -d -o nobody /tmp/trial && cd /tmp/trial || exit 1
tessary --help >help || fail "tessary --help"
tessary-render /usr/share/tessary/tour.frac --entry 1 --size 320x240 -o still.png || fail "a still"
[[ $(head -c 4 still.png) == $'\x89PNG' ]] || fail "the still is no PNG"
tessary-frac export /usr/share/tessary/tour.frac -o tour.json || fail "an export"
tessary-frac import tour.json -o again.frac && cmp again.frac /usr/share/tessary/tour.frac ||
    fail "what was exported does not come back"
step "a still and an export are made"

Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp 3>display 2>Xvfb.log &
server=$!
for _ in {1..600}; do [[ -s display ]] && break || sleep 0.1; done
export DISPLAY=:$(<display)
stdbuf -oL tessary --cpu >output 2>errors &
program=$!
trap 'kill "$program" "$server" 2>/dev/null' EXIT
for _ in {1..1200}; do grep -q '^Rendering to texture took' output && break || sleep 0.1; done
grep -q '^Rendering to texture took' output || fail "no picture: $(cat output errors)"
window=$(xdotool search --onlyvisible --name '^Tessary' | tail -n 1)
look() { xwd -silent -id "$window" >"$1" || fail "a screenshot"; }
xdotool windowmove "$window" 0 0 windowfocus "$window"
sleep 2
look before
(($(od -An -v -w4 -tx4 before | sort -u | wc -l) > 100)) || fail "the window shows no picture"
xdotool key --delay 40 Right Return
for _ in {1..300}; do
    look after
    cmp -s before after || break
    sleep 0.1
done
cmp -s before after && fail "the window does not answer keys"
kill -TERM "$program"
wait "$program"
kill "$server"
wait "$server"
trap - EXIT
step "the window shows a picture and answers keys"

cat >program.cpp <<'CODE'
#include <GL/freeglut.h>
#include <GlutMenu/CGlutMenu.h>

int main() {
    GlutMenu::CGlutMenu menu;
    return menu.keyboard_callback('x') ? 1 : 0;
}
CODE
libraries=$(pkg-config --cflags --libs glutmenu) || fail "pkg-config"
quietly g++ -std=c++20 program.cpp -o program $libraries
cat >CMakeLists.txt <<'CODE'
cmake_minimum_required(VERSION 3.25)
project(Trial LANGUAGES CXX)
find_package(GlutMenu REQUIRED)
add_executable(trial program.cpp)
target_link_libraries(trial PRIVATE GlutMenu::GlutMenu)
CODE
quietly cmake -S . -B build
quietly cmake --build build
step "a program is compiled with the toolkit"

cd / && rm -rf /tmp/trial
quietly apt-get purge -y tessary libglutmenu-dev
rm -f /var/lib/apt/extended_states /var/log/apt/*
[[ -z $(names) ]] || fail "removing leaves: $(names)"
[[ -z $(mentions) ]] || fail "removing leaves what speaks of it: $(mentions)"
step "removed without a trace"
