#!/bin/sh
# Installs the build into a scratch prefix and checks that the desktop finds Tessel there: the programs, the
# launcher entry, the icon, and each file kind's extension in a MIME database built from the installed types.
set -eu
build=$1
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null
for file in bin/tessel bin/tessel-app share/applications/app.tessel.Tessel.desktop \
            share/icons/hicolor/scalable/apps/app.tessel.Tessel.svg share/mime/packages/app.tessel.Tessel.xml; do
  test -e "$prefix/$file" || { echo "not installed: $file"; exit 1; }
done
desktop-file-validate "$prefix/share/applications/app.tessel.Tessel.desktop"
update-mime-database "$prefix/share/mime" 2>/dev/null
for extension in tesselarchive tesselrules tesselratepackage tesselcrewlibrary tesseldiagnostic; do
  grep -q "\*\.$extension" "$prefix/share/mime/globs2" || { echo "no MIME type for .$extension"; exit 1; }
done
echo "installed and registered"
