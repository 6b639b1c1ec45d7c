"""The few words of the reference pages that are no message."""

from typing import NamedTuple


class Labels(NamedTuple):
    language: str
    title: str
    explanation: str
    action: str
    raised: str
    search: str
    shown: str  # behind two numbers, "12 / 104"


LABELS = {
    "en": Labels("English", "Messages of the native library", "Explanation", "What to do", "Raised in",
                 "Search number or words", "messages shown"),
    "cs": Labels("Čeština", "Zprávy nativní knihovny", "Vysvětlení", "Co dělat", "Vzniká v",
                 "Hledat číslo nebo slova", "zobrazených zpráv"),
    "de": Labels("Deutsch", "Meldungen der nativen Bibliothek", "Erläuterung", "Was zu tun ist", "Ausgelöst in",
                 "Nummer oder Wörter suchen", "Meldungen angezeigt"),
    "es": Labels("Español", "Mensajes de la biblioteca nativa", "Explicación", "Qué hacer", "Se produce en",
                 "Buscar número o palabras", "mensajes mostrados"),
    "fr": Labels("Français", "Messages de la bibliothèque native", "Explication", "Que faire", "Émis par",
                 "Rechercher un numéro ou des mots", "messages affichés"),
    "hu": Labels("Magyar", "A natív függvénytár üzenetei", "Magyarázat", "Teendő", "Forrása",
                 "Szám vagy szavak keresése", "megjelenített üzenet"),
    "it": Labels("Italiano", "Messaggi della libreria nativa", "Spiegazione", "Cosa fare", "Generato in",
                 "Cerca numero o parole", "messaggi visualizzati"),
    "ja": Labels("日本語", "ネイティブ ライブラリのメッセージ", "説明", "対処方法", "発生元",
                 "番号または語句を検索", "件のメッセージを表示"),
    "ko": Labels("한국어", "네이티브 라이브러리 메시지", "설명", "조치 방법", "발생 위치",
                 "번호 또는 단어 검색", "개 메시지 표시됨"),
    "pl": Labels("Polski", "Komunikaty biblioteki natywnej", "Wyjaśnienie", "Co zrobić", "Zgłaszany w",
                 "Szukaj numeru lub słów", "wyświetlonych komunikatów"),
    "pt_BR": Labels("Português (Brasil)", "Mensagens da biblioteca nativa", "Explicação", "O que fazer", "Emitida em",
                    "Pesquisar número ou palavras", "mensagens exibidas"),
    "ru": Labels("Русский", "Сообщения нативной библиотеки", "Пояснение", "Что делать", "Выдается в",
                 "Поиск по номеру или словам", "показано сообщений"),
    "zh_CN": Labels("简体中文", "本机库的消息", "说明", "处理方法", "产生于", "搜索编号或文字", "条消息已显示"),
    "zh_TW": Labels("繁體中文", "原生程式庫的訊息", "說明", "處理方式", "產生於", "搜尋編號或文字", "則訊息已顯示"),
}
