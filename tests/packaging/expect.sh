# shellcheck shell=bash
# Counts what does not hold. Sourced, not run.

failures=0

# expect WHAT COMMAND...: tells WHAT when the command fails.
expect()
{
    local what=$1
    shift
    if ! "$@"; then
        echo "FAIL: $what"
        failures=$((failures + 1))
    fi
}
