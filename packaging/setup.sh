# Shared by ./run, ./test, ./fuzz and ./package, which set `root` to the folder they stand in: installs what is missing,
# configures and builds. Everything said here goes to standard error.

say() { printf '%s: %s\n' "$(basename "$0")" "$*" >&2; }

# package_list SECTION...: the packages of these sections.
package_list() {
    local section= line
    while read -r line; do
        case $line in
            '' | '#'*) ;;
            '['*']') section=${line:1:-1} ;;
            *) [[ " $* " == *" $section "* ]] && printf '%s\n' "$line" ;;
        esac
    done <"$root/packaging/debian-packages.txt"
    return 0
}

# missing_packages NAME...: those that are not installed, asked in one go because ./run must be
# quick when nothing is to be done.
missing_packages() {
    local name status
    declare -A installed=()
    while read -r name status; do
        [[ $status == installed ]] && installed[$name]=1
    done < <(dpkg-query -W -f '${Package} ${db:Status-Status}\n' "$@" 2>/dev/null)
    for name in "$@"; do
        [[ -n ${installed[$name]:-} ]] || printf '%s\n' "$name"
    done
}

# available_packages NAME...: those that this release has, as far as the package lists tell.
available_packages() {
    (($#)) && apt-cache policy "$@" 2>/dev/null |
        awk '/^[^ ]/ { name = substr($1, 1, length($1) - 1) } $1 == "Candidate:" && $2 != "(none)" { print name }'
}

# extra_packages SECTION...: what is missing of these sections and not in every release.
extra_packages() {
    available_packages $(missing_packages $(package_list "${@/%/-where-available}" | sort -u))
}

# ensure_packages SECTION...: installs what is missing. Elsewhere than on Debian the list cannot be
# checked, and the build says what it lacks.
ensure_packages() {
    command -v dpkg-query >/dev/null && command -v apt-get >/dev/null || return 0
    local missing extra log=$root/build/apt.log as_root=()
    mapfile -t missing < <(missing_packages $(package_list "$@" | sort -u))
    mapfile -t extra < <(extra_packages "$@")
    ((${#missing[@]} + ${#extra[@]})) || return 0
    if ((EUID != 0)); then
        if ! command -v sudo >/dev/null; then
            say "please install (there is no sudo here to do it): ${missing[*]} ${extra[*]}"
            return 1
        fi
        as_root=(sudo)
    fi
    mkdir -p "$root/build"
    say "installing ${missing[*]} ${extra[*]}"
    # Old package lists may name packages that are no longer there, so they are renewed first; a new
    # machine's have none, and so tell only now which of the extra packages there are.
    if ! { "${as_root[@]}" apt-get update &&
        mapfile -t extra < <(extra_packages "$@") &&
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
            apt-get install -y --no-install-recommends "${missing[@]}" "${extra[@]}"; } \
        >"$log" 2>&1; then
        say "apt-get could not install ${missing[*]} ${extra[*]}; its last words are in $log"
        return 1
    fi
}

# configure PRESET WHAT: prepares the build folder for the program alone, or for tests too, unless it
# already is. A folder that can build the tests will do for the program.
configure() {
    local preset=$1 what=$2 folder=$root/build/$1 options=()
    if [[ -f $folder/build.ninja ]] && cmp -s "$root/CMakePresets.json" "$folder/presets"; then
        [[ $what == program || -f $folder/with-tests ]] && return 0
    else
        # A cache of other presets would win over these.
        options+=(--fresh)
    fi
    [[ $what == program ]] && options+=(-DTESSARY_TESTS=OFF -DTESSARY_BENCH=OFF)
    command -v ccache >/dev/null && options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    say "configuring $folder"
    mkdir -p "$root/build"
    if ! (cd "$root" && cmake --preset "$preset" "${options[@]}") >"$folder.log" 2>&1; then
        cat "$folder.log" >&2
        say "could not configure $folder"
        return 1
    fi
    cp "$root/CMakePresets.json" "$folder/presets"
    [[ $what == program ]] || touch "$folder/with-tests"
}

# build PRESET TARGET: builds; silent when there is nothing to do.
build() {
    local folder=$root/build/$1 target=$2
    # A dry run is the cheapest way to learn whether there is anything to say.
    [[ $(ninja -C "$folder" -n "$target" 2>/dev/null) == *'no work to do'* ]] && return 0
    say "building $folder"
    ninja -C "$folder" "$target" >&2 && return 0
    say "could not build $folder"
    return 1
}
