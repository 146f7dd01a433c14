# The releases of CHANGELOG.md, which are the headings that begin with a number: as the XML of AppStream,
# or with -v debian=1 as Debian's changelog, for which -v version and -v date name the package's own.
# What is not released yet stands under the version that it will have.
function plain(text) {
    gsub(/\[|\]\([^)]*\)|`|\*/, "", text)
    return text
}
function xml(text) {
    gsub(/&/, "\\&amp;", text)
    gsub(/</, "\\&lt;", text)
    gsub(/>/, "\\&gt;", text)
    return text
}
function finish() {
    if (!open) return
    if (debian) printf "\n -- The Tessary developers <tessary@example.org>  %s\n\n", date
    else print "        </ul>\n      </description>\n    </release>"
    open = 0
}
/^## / {
    finish()
    number = $2
    day = $3
    gsub(/[()]/, "", day)
    if (!debian && number !~ /^[0-9]/) next
    if (debian && printed++) exit
    open = 1
    if (debian) printf "tessary (%s) unstable; urgency=medium\n\n", version
    else printf "    <release version=\"%s\" date=\"%s\">\n      <description>\n        <ul>\n", number, day
}
/^- / && open {
    text = plain(substr($0, 3))
    if (!debian) { print "          <li>" xml(text) "</li>"; next }
    count = split(text, words, " ")
    line = "  *"
    for (i = 1; i <= count; ++i) {
        if (length(line) + length(words[i]) > 78) { print line; line = "   " }
        line = line " " words[i]
    }
    print line
}
END { finish() }
