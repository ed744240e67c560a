# For scripts to source: when the script's only argument is --help, prints the comment that it opens
# with, and ends it.
if [[ $# == 1 && $1 == --help ]]; then
    sed -n '2,/^[^#]/ s/^# \{0,1\}//p' "$0"
    exit
fi
