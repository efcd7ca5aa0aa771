# build_by_pkg_config.sh PKG_CONFIG PREFIX SOURCE OUTPUT COMPILER [FLAGS...]: builds the consumer as a plain makefile
# would, and runs it.
pkg_config=$1 prefix=$2 source=$3 output=$4
shift 4
flags=$("$pkg_config" --define-variable=prefix="$prefix" --cflags --libs --static vso)
# shellcheck disable=SC2086 # the flags are words, not one word
"$@" -std=c++17 "$source" -o "$output" $flags
LD_LIBRARY_PATH=$("$pkg_config" --define-variable=prefix="$prefix" --variable=libdir vso) "$output"
