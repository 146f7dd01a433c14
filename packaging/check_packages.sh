# The rest of ./package --check: tries $packages on a system that was made a moment ago. What it does there
# is packaging/check_inside.sh.
clean=$root/build/clean-root
suite=$(. /etc/os-release && printf '%s' "${VERSION_CODENAME:-stable}")
# Where this system has its own packages from.
mirror=${TESSARY_MIRROR:-$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' "Codename: $suite" | head -n 1)}

# What it warns of hangs on its release: that of Debian 12 has nothing to say.
fail_on=error
[[ $suite != bookworm ]] || fail_on=error,warning
lintian --fail-on "$fail_on" --allow-root --tag-display-limit 0 "$packages"/*.deb || exit 1
if ! command -v debootstrap >/dev/null; then
    say "the packages are not tried: there is no debootstrap"
    exit 77
fi
if ! unshare --mount --pid --fork --mount-proc true 2>/dev/null; then
    say "the packages are not tried: this machine lets nobody mount"
    exit 77
fi

rm -rf --one-file-system "$clean"
# What lies outside the packages and is needed to try them comes with the system.
if ! debootstrap --variant=minbase --include=xvfb,xauth,xdotool,x11-apps,x11-utils,g++,cmake,make,pkg-config,procps \
    "$suite" "$clean" ${mirror:+"$mirror"} >"$clean.log" 2>&1; then
    if ! grep -q '^I: Retrieving Packages' "$clean.log"; then
        say "the packages are not tried: no system can be fetched from ${mirror:-anywhere}"
        exit 77
    fi
    tail -n 5 "$clean.log" >&2
    say "could not make a new system; all of it is in $clean.log"
    exit 1
fi
mkdir "$clean/try"
cp "$packages"/*.deb "$root/packaging/check_inside.sh" "$clean/try"
cp /etc/resolv.conf "$clean/etc/resolv.conf"
[[ ! -d $root/GlutMenu/example ]] || cp -r "$root/GlutMenu/example" "$clean/try"

# Mounts of its own end with it, and so do processes.
unshare --mount --pid --fork --kill-child bash -c '
    mount -t proc proc "$1/proc" && mount --rbind /dev "$1/dev" &&
    exec chroot "$1" /usr/bin/env -i ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
        bash /try/check_inside.sh' - "$clean"
status=$?
((status == 0)) && rm -rf --one-file-system "$clean"
exit $status
