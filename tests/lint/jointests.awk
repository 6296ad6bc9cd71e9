# Joins the sources below `tests` that are compiled alike in a database of compile commands: in place of
# their entries stands one for a source in `folder` that includes them all.

$1 == "\"directory\":" { directory = $0 }
$1 == "\"command\":" { command = $0 }
$1 == "\"file\":" { file = $2; gsub(/"/, "", file) }
$1 ~ /^}/ {
    if (index(file, tests) == 1 && !hasUsingDeclaration(file)) {
        # What differs between them is the end of the command: the file, and what it is compiled to.
        sub(/ -o .*/, "", command)
        alike = directory command
        if (!(alike in joined)) {
            joined[alike] = folder "/" ++count ".cpp"
            add(directory, command " -o joined.o -c " joined[alike] "\",", joined[alike])
        }
        print "#include \"" file "\"" >joined[alike]
    } else {
        add(directory, command, file)
    }
}
END { print "[" entries "\n]" }

# misc-unused-using-decls looks for these in no included file.
function hasUsingDeclaration(file,    line, found)
{
    while (!found && (getline line <file) > 0)
        found = line ~ /(^|[ \t;{])using[ \t]+[^=]*$/ && line !~ /using[ \t]+namespace/
    close(file)
    return found
}

function add(directory, command, file)
{
    entries = entries separator "\n{\n" directory "\n" command "\n  \"file\": \"" file "\"\n}"
    separator = ","
}
