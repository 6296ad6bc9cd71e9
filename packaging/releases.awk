# Turns the changelog's released sections ("## 1.2.3 - 2026-01-31") into the releases of AppStream's
# metainfo, with what the changelog says of each, and puts them in the place of @RELEASES@ in the
# template: awk -v output=FILE -f releases.awk CHANGELOG.md TEMPLATE
function close_point() {
    if (point != "")
        releases = releases "          <li>" point "</li>\n"
    point = ""
}
function close_release() {
    close_point()
    if (released)
        releases = releases "        </ul>\n      </description>\n    </release>\n"
    released = 0
}
function text(line) {
    gsub(/&/, "\\&amp;", line)
    gsub(/</, "\\&lt;", line)
    gsub(/`/, "", line)
    gsub(/^[ -]+/, "", line)
    return line
}

FNR == 1 && NR != 1 {
    close_release()
    reading_template = 1
}
!reading_template && /^## / {
    close_release()
    if ($0 ~ /^## [0-9]+\.[0-9]+\.[0-9]+ - [0-9]+-[0-9]+-[0-9]+$/) {
        released = 1
        releases = releases "    <release version=\"" $2 "\" date=\"" $4 "\">\n" \
            "      <description>\n        <ul>\n"
    }
}
!reading_template && released && /^- / { close_point(); point = text($0) }
!reading_template && released && /^  / { point = point " " text($0) }
reading_template && /@RELEASES@/ { printf "%s", releases >output; next }
reading_template { print >output }
END {
    if (releases == "") {
        print "The changelog names no release." >"/dev/stderr"
        exit 1
    }
}
