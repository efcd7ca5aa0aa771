# read_in_python.sh PROTOC PYTHON SCHEMA_ROOT MODULES WRITER READER: 77 where Python has no protobuf module.
protoc=$1 python=$2 schema_root=$3 modules=$4 writer=$5 reader=$6
if ! "$python" -c 'import google.protobuf' 2> /dev/null; then
  echo "no protobuf module for $python: skipped"
  exit 77
fi
rm -rf "$modules"
mkdir -p "$modules"
"$protoc" -I "$schema_root" --python_out="$modules" "$schema_root"/vso/proto/*.proto
"$writer" "$modules/zap.bin"
"$python" "$reader" "$modules" "$modules/zap.bin"
