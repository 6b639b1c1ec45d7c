# The messages: what the tool tells of them, how it looks over an installation, what is made from the catalogues.

# shipped LANGUAGE KEY: the text as its translator wrote it, apostrophes as they are shown.
shipped() {
  local file=resources/messages/src/KTBNVMessages_$1.properties
  [ "$1" != en ] || file=resources/messages/KTBNVMessages.properties
  sed -n "s/^$2=//p" "$file" | sed "s/''/'/g"
}

case_msg_explains_a_message() {
  local expected
  expected=$(shipped en KTBNV0087_CREATE_NAMED_PIPE_FAILED; echo
    shipped en KTBNV0087_CREATE_NAMED_PIPE_FAILED.explanation; echo
    shipped en KTBNV0087_CREATE_NAMED_PIPE_FAILED.useraction)
  for name in KTBNV0087 ktbnv0087e 87 0087 KTBNV0087_CREATE_NAMED_PIPE_FAILED; do
    run 0 msg "$name"
    equal "$name" "$expected" "$(cat "$work/out")"
  done
}

case_msg_fills_the_inserts() {
  run 0 msg 87 transfer "No way {0}."
  equal "the text" "KTBNV0087E: Unable to create the pipe of the service 'transfer'. System text: No way {0}." \
    "$(head -n 1 "$work/out")"
  run 1 msg 87 transfer
  error_line "message KTBNV0087 takes another number of inserts than 1: $(shipped en KTBNV0087_CREATE_NAMED_PIPE_FAILED)"
  run 1 msg 87 a b c
  error_line "message KTBNV0087 takes another number of inserts than 3: $(shipped en KTBNV0087_CREATE_NAMED_PIPE_FAILED)"
}

case_msg_speaks_every_language() {
  for language in cs de es fr hu it ja ko pl pt_BR ru zh_CN zh_TW; do
    run 0 msg 87 --lang "$language"
    equal "$language" "$(shipped "$language" KTBNV0087_CREATE_NAMED_PIPE_FAILED)" "$(head -n 1 "$work/out")"
  done
  while read -r name language; do
    run 0 msg 87 --lang "$name"
    equal "$name" "$(shipped "$language" KTBNV0087_CREATE_NAMED_PIPE_FAILED)" "$(head -n 1 "$work/out")"
  done <<'END'
pt pt_BR
pt-br pt_BR
PT_BR pt_BR
pt-PT pt_BR
zh zh_CN
zh_HK zh_CN
zh-TW zh_TW
fr-FR fr
de_AT.UTF-8 de
en-GB en
END
  LC_ALL=de_DE.UTF-8 run 0 msg 87
  equal "the user's" "$(shipped de KTBNV0087_CREATE_NAMED_PIPE_FAILED)" "$(head -n 1 "$work/out")"
  run 0 msg 87 --lang en
  equal "English" "$(shipped en KTBNV0087_CREATE_NAMED_PIPE_FAILED)" "$(head -n 1 "$work/out")"
}

case_msg_searches_words_in_texts_explanations_and_actions() {
  run 0 msg --search zxdisc
  equal "in a text" "$(shipped en KTBNV0153_GETPROCADDRESS_ZXDISC_ERROR)" "$(cat "$work/out")"
  run 0 msg --search "END THE PROCESS THAT SERVES"
  equal "in an action" "$(shipped en KTBNV0087_CREATE_NAMED_PIPE_FAILED)" "$(cat "$work/out")"
  run 1 msg --search "no such words"
  error_line "no message contains no such words"
}

case_msg_reports_what_it_does_not_know() {
  run 1 msg 9999
  error_line "there is no message 9999"
  run 1 msg KTBNV0087X
  error_line "there is no message KTBNV0087X"
  run 1 msg 87 --lang sv
  error_line "there are no messages in the language sv; there are cs, de, en, es, fr, hu, it, ja, ko, pl, pt_BR, ru, zh_TW, zh_CN"
  KTB_PROD=Z:$work run 1 msg 87
  error_line "cannot read the message catalogue Z:$work/lib/messages/KTBNVMessages.properties"
  run 2 msg
  error_line "MESSAGE or --search is required"
  run 2 msg 87 --search word
  error_line "MESSAGE excludes --search"
  run 2 msg --search ""
  error_line "--search: a word is needed"
}

# whole_jar: the first bytes of an archive, and the record that ends an empty one.
whole_jar() { printf 'PK\003\004PK\005\006'; head -c 18 /dev/zero; }

# installed: a product as it is installed, in $work/product, with a Java in $work/java.
installed() {
  rm -rf "$work/product" "$work/java"
  mkdir -p "$work/product/lib/messages" "$work/product/share/java" "$work/java/bin" "$work/logs"
  cp resources/messages/*.properties "$work/product/lib/messages/"
  whole_jar >"$work/product/share/java/tessel-native-0.1.0.jar"
  : >"$work/java/bin/java.exe"
}

# doctor CODE LOCALE LOG_FOLDER
doctor() { JAVA_HOME=Z:$work/java KTB_PROD=Z:$work/product LC_ALL=$2 run "$1" doctor --log-dir "$3"; }

windows_path() { printf 'Z:%s' "$(realpath "$1")" | tr / '\\'; }

library() { windows_path "$folder/tesselnative.dll"; }

case_doctor_finds_everything_in_order() {
  installed
  doctor 0 it_IT.UTF-8 "Z:$work/logs"
  equal "the findings" "ok    product root: Z:$work/product
ok    messages for the locale it-IT: KTBNVMessages_it.properties, KTBNVElements_it.properties
ok    messages of all languages: 28 files in Z:$work/product/lib/messages/
ok    library: $(library), version 0.1.0
ok    companion jar: Z:$work/product/share/java/tessel-native-0.1.0.jar
ok    Java: Z:$work/java\\bin\\java.exe
ok    log directory: Z:$work/logs can be written" "$(cat "$work/out")"
  equal "the log folder" "" "$(ls "$work/logs")"
  doctor 0 C "Z:$work/logs/to/be/made"
  equal "a folder to be made" "ok    log directory: Z:$work/logs/to/be/made can be written" "$(tail -n 1 "$work/out")"
  equal "the log folder" "" "$(ls "$work/logs")"
}

case_doctor_says_what_to_do_for_each_finding() {
  installed
  rm "$work/product/lib/messages"/KTBNVElements_{it,ko}.properties "$work/product/share/java"/*.jar "$work/java/bin"/*
  : >"$work/file"
  doctor 1 it_IT.UTF-8 "Z:$work/file"
  equal "the findings" "ok    product root: Z:$work/product
WRONG messages for the locale it-IT: missing in Z:$work/product/lib/messages/: KTBNVElements_it.properties
      Install the product again. Until then programs of this user wait for the file without end.
WRONG messages of all languages: missing in Z:$work/product/lib/messages/: KTBNVElements_it.properties, KTBNVElements_ko.properties
      Install the product again. Programs of users with such a language wait for its file without end, or show bare keys in place of English.
ok    library: $(library), version 0.1.0
WRONG companion jar: Z:$work/product/share/java/tessel-native-0.1.0.jar is missing
      Install the product again. Java programs need the jar of the library's version; native ones do not.
WRONG Java: Z:$work/java\\bin\\java.exe is missing
      Correct the environment variable JAVA_HOME, or remove it to take Java from PATH." "$(head -n 10 "$work/out")"
  grep -qF "WRONG log directory: Z:$work/file: " "$work/out" || fail "the log directory"
}

case_doctor_knows_that_english_is_not_waited_for() {
  installed
  rm "$work/product/lib/messages/KTBNVMessages.properties"
  doctor 1 en_US.UTF-8 "Z:$work/logs"
  equal "the findings" "WRONG messages for the locale en-US: missing in Z:$work/product/lib/messages/: KTBNVMessages.properties
      Install the product again. Until then programs of this user show messages as bare keys." \
    "$(sed -n '2,3p' "$work/out")"
}

case_doctor_names_a_jar_of_another_version() {
  installed
  mv "$work/product/share/java/tessel-native-0.1.0.jar" "$work/product/share/java/tessel-native-0.0.9.jar"
  : >"$work/product/share/java/tessel-native-0.0.9-sources.jar"
  doctor 1 C "Z:$work/logs"
  grep -qxF "WRONG companion jar: Z:$work/product/share/java/tessel-native-0.1.0.jar is missing, there is tessel-native-0.0.9.jar" \
    "$work/out" || fail "the jar"
}

case_doctor_reports_a_damaged_jar() {
  local jar=tessel-native-0.1.0.jar bytes
  installed
  for bytes in '' PK 'PK\003\004' 'PK\003\004 and no end of an archive' '<html>no archive at all</html>'; do
    printf %b "$bytes" >"$work/product/share/java/$jar"
    doctor 1 C "Z:$work/logs"
    equal "the findings of a jar of '$bytes'" "WRONG companion jar: Z:$work/product/share/java/$jar is damaged
      Install the product again. Java programs need the jar of the library's version; native ones do not." \
      "$(grep -A 1 '^WRONG' "$work/out")"
  done
  { printf 'no archive'; whole_jar | tail -c 22; } >"$work/product/share/java/$jar"
  doctor 1 C "Z:$work/logs"
  contains out "WRONG companion jar: Z:$work/product/share/java/$jar is damaged"
}

# The tool finds the product of its build by itself; other programs would not.
case_doctor_wants_the_product_root_in_the_environment() {
  run 1 doctor
  equal "the root" "WRONG product root: $(windows_path "$folder/..")/product is beside this tool, but the environment does not name it
      Set the environment variable KTB_PROD to it. Other programs do not find their messages without." \
    "$(head -n 2 "$work/out")"
}

case_doctor_reads_paths_in_the_code_page() {
  installed
  mv "$work/product" "$work/pröduct"
  mkdir "$work/lögs"
  JAVA_HOME=Z:$work/java KTB_PROD=Z:$work/pröduct LC_ALL=de_DE.UTF-8 run 0 doctor --log-dir "Z:$work/lögs"
  equal "findings" 7 "$(grep -c '^ok ' "$work/out")"
  rm -r "$work/pröduct" "$work/lögs"
}

# without_product FINDING: of all that is wrong, only the finding of the product root says what to do.
without_product() {
  equal "the findings" "$1
WRONG messages for the locale de-DE: not looked at
      See the finding of the product root.
WRONG messages of all languages: not looked at
      See the finding of the product root.
WRONG companion jar: not looked at
      See the finding of the product root." "$(grep -A 1 '^WRONG' "$work/out" | grep -vx -e -- -e 'ok .*')"
}

case_doctor_reports_a_product_root_that_is_none() {
  installed
  KTB_PROD=Z:$work/none JAVA_HOME=Z:$work/java LC_ALL=de_DE.UTF-8 run 1 doctor --log-dir "Z:$work/logs"
  without_product "WRONG product root: Z:$work/none is no folder
      Set KTB_PROD to the folder that the product is installed in."
}

case_doctor_reports_a_product_root_that_is_another_folder() {
  installed
  KTB_PROD=Z:$work/java JAVA_HOME=Z:$work/java LC_ALL=de_DE.UTF-8 run 1 doctor --log-dir "Z:$work/logs"
  without_product "WRONG product root: Z:$work/java has no folder lib/messages
      Set KTB_PROD to the folder that the product is installed in. If it is this one, install the product again."
}

case_doctor_reports_that_no_product_root_is_known() {
  installed
  mkdir -p "$work/alone/bin"
  cp "$folder/tesselctl.exe" "$folder/tesselnative.dll" "$work/alone/bin/"
  folder=$work/alone/bin JAVA_HOME=Z:$work/java LC_ALL=de_DE.UTF-8 run 1 doctor --log-dir "Z:$work/logs"
  without_product "WRONG product root: not known
      Set the environment variable KTB_PROD to the folder that the product is installed in."
}

case_doctor_finds_java_in_the_search_path() {
  installed
  WINEPATH=$(windows_path "$work/java/bin") JAVA_HOME='' KTB_PROD=Z:$work/product run 0 doctor --log-dir "Z:$work/logs"
  contains out "ok    Java: $(windows_path "$work/java/bin")\\java.exe"
}

case_doctor_says_that_there_is_no_java() {
  installed
  WINEPATH=$(windows_path "$work/logs") JAVA_HOME='' KTB_PROD=Z:$work/product run 1 doctor --log-dir "Z:$work/logs"
  equal "the findings" "WRONG Java: not found
      Install Java 8 or later, and set JAVA_HOME or PATH. Native programs do not need it." \
    "$(grep -A 1 '^WRONG' "$work/out")"
}

# A copy of what scripts/messages reads and writes.
copied() {
  rm -rf "$work/tree"
  mkdir -p "$work/tree/tools" "$work/tree/scripts" "$work/tree/docs"
  cp -r resources src "$work/tree/"
  cp -r tools/messages "$work/tree/tools/"
  cp -r docs/messages "$work/tree/docs/"
  cp scripts/messages "$work/tree/scripts/"
}

# check_finds CODE TEXT
check_finds() {
  local code=0
  "$work/tree/scripts/messages" --check >"$work/out" 2>&1 || code=$?
  equal "the exit code of scripts/messages --check" "$1" "$code"
  equal "its findings" "$2" "$(cat "$work/out")"
}

case_what_is_made_from_the_catalogues_is_checked() {
  local made="not as scripts/messages writes it"
  copied
  check_finds 0 ""
  echo "KTBNV0001_X=x" >>"$work/tree/resources/messages/KTBNVMessages_fr.properties"
  echo "# stray" >"$work/tree/resources/messages/KTBNVMessages_sv.properties"
  echo >>"$work/tree/docs/messages/ja.html"
  check_finds 1 "docs/messages/ja.html: $made
resources/messages/KTBNVMessages_fr.properties: $made
resources/messages/KTBNVMessages_sv.properties: $made"
  copied
  sed -i 's/^KTBNV_DATE=.*/KTBNV_DATE=Datum, neu: {0}/' "$work/tree/resources/messages/src/KTBNVElements_de.properties"
  check_finds 1 "resources/messages/KTBNVElements_de.properties: $made"
  "$work/tree/scripts/messages"
  check_finds 0 ""
}

case_the_reference_names_only_classes_that_a_log_shows() {
  copied
  mv "$work/tree/src/internal/jni/Guard.cpp" "$work/tree/src/internal/jni/Helper.cpp"
  "$work/tree/scripts/messages"
  check_finds 1 "KTBNV0178_NOT_IN_CODE_PAGE: raised in Helper, which is no descriptor's class"
}

case_the_reference_works_in_a_browser() {
  timeout -k 5 120 tests/tool/look_at_reference.py docs/messages >"$work/out" 2>"$work/err" || fail "the reference"
}
