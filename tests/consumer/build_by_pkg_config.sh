# build_by_pkg_config.sh PKG_CONFIG SOURCE OUTPUT COMPILER [FLAGS...]: builds the consumer as a plain makefile
# would, and runs it.
pkg_config=$1 source=$2 output=$3
shift 3
flags=$("$pkg_config" --cflags --libs --static vso)
# shellcheck disable=SC2086 # the flags are words, not one word
"$@" -std=c++17 "$source" -o "$output" $flags
LD_LIBRARY_PATH=$("$pkg_config" --variable=libdir vso) "$output"
