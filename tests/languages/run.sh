#!/usr/bin/env bash
# A server fails in every language: the event log holds the translated text in UTF-8, and a Java client gets the same.
# usage: tests/languages/run.sh FOLDER_OF_THE_PROGRAMS PRODUCT JAR      (with Wine running)
set -euo pipefail
export LC_ALL=C  # texts are compared byte by byte
source "$(dirname "$0")/../../scripts/lib.sh"

folder=$1
export KTB_PROD
KTB_PROD=$(product_root "$2")
jar=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
javac --release 8 -Xlint:-options -cp "$jar" -d "$work" tests/languages/Ask.java

# text LANGUAGE: what stands before the system's text, the last insert.
text() {
  local file=resources/messages/src/KTBNVMessages_$1.properties
  [ "$1" != en ] || file=resources/messages/KTBNVMessages.properties
  sed -n 's/^KTBNV0139_GETFILESECURITY_ERROR=//p' "$file" | sed "s/''/'/g; s/{1}/none/; s/{0}\$//"
}

# fails LANGUAGE LOCALE
fails() {
  local language=$1 locale=$2 line logged expected server status=0 service=languages-$$-$1
  mkdir "$work/$language"
  mkfifo "$work/$language/ready" "$work/$language/input"
  LC_ALL=$locale wine "$folder/language_server.exe" "$service" "Z:$work/$language" none \
    <"$work/$language/input" >"$work/$language/ready" 2>"$work/$language/err" &
  server=$!
  exec 8>"$work/$language/input"
  read -r -t 60 line <"$work/$language/ready" || die "$language: the server does not start"
  LC_ALL=$locale timeout 60 wine "$java" -cp "$jar;$work" Ask "$service" "$work/$language/java" </dev/null >"$work/$language/out" 2>&1 ||
    status=$?
  [ "$status" = 0 ] || { cat "$work/$language/out"; die "$language: the client ended with $status"; }
  # A line, not its end: services of Wine may hold the pipe open.
  echo >&8
  exec 8>&-
  wait "$server" || die "$language: the server ended with $?"
  logged=$(sed -n 's/^.* LanguageServe E \(KTBNV0139E: .*\)\r$/\1/p' "$work/$language/event0.log")
  expected=$(text "$language")
  [ -n "$expected" ] || die "$language: the catalogue has no text to expect"
  [ "${logged:0:${#expected}}" = "$expected" ] || die "$language: expected '$expected', logged '$logged'"
  [ ${#logged} -gt ${#expected} ] || die "$language: the text of the system is missing: $logged"
  iconv -f UTF-8 -t UTF-8 <<<"$logged" >/dev/null || die "$language: not UTF-8: $logged"
  [ "$(cat "$work/$language/java")" = "$logged" ] || die "$language: Java got '$(cat "$work/$language/java")'"
  printf '%s: %s\n' "$language" "$logged"
}

fails en en_US.UTF-8
fails cs cs_CZ.UTF-8
fails de de_DE.UTF-8
fails es es_ES.UTF-8
fails fr fr_FR.UTF-8
fails hu hu_HU.UTF-8
fails it it_IT.UTF-8
fails ja ja_JP.UTF-8
fails ko ko_KR.UTF-8
fails pl pl_PL.UTF-8
fails pt_BR pt_BR.UTF-8
fails ru ru_RU.UTF-8
fails zh_CN zh_CN.UTF-8
fails zh_TW zh_TW.UTF-8
