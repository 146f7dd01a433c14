# The rest of ./run where there is no display: $tessary runs on a virtual one with the arguments of
# ./run. A benchmark runs to its total, anything else until its first picture is on the screen.

screenshot=$root/build/screenshot.png
output=$attempt/output
awaited='^Rendering to texture took ([1-9]|0[.])'
for option in "$@"; do
    [[ $option == *--bench:* ]] && awaited='^Total rendering time '
done

# Ends what still runs, however this script is left.
end_all() {
    kill "$program" "$server" 2>/dev/null
    wait 2>/dev/null
    rm -rf "$attempt"
}
program= server=
trap end_all EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$attempt/display" 2>"$attempt/Xvfb" &
server=$!
until [[ -s $attempt/display ]]; do
    if ! kill -0 "$server" 2>/dev/null; then
        say "could not start a virtual display: $(tail -n 1 "$attempt/Xvfb")"
        exit 1
    fi
    sleep 0.05
done
export DISPLAY=:$(<"$attempt/display")

: >"$output"  # there before anybody reads it
"$tessary" "$@" >"$output" &
program=$!
tail -n +1 -f -s 0.1 --pid="$program" "$output" &
copier=$!

until grep -Eq "$awaited" "$output"; do
    if ! kill -0 "$program" 2>/dev/null; then
        wait "$program" 2>/dev/null
        status=$?
        wait "$copier"
        exit $status
    fi
    sleep 0.1
done

# Without a window manager the window stands half outside the screen. The line comes before the
# picture is shown.
window=$(xdotool search --onlyvisible --name '^Tessary' | tail -n 1)
xdotool windowmove "$window" 0 0
sleep 1
mkdir -p "$root/build"
import -silent -window "${window:-root}" "$screenshot"
taken=$?
kill -TERM "$program"
wait "$program" 2>/dev/null
wait "$copier"
if ((taken != 0)); then
    say "could not take a screenshot"
    exit 1
fi
echo "Screenshot: $screenshot"
exit 0
