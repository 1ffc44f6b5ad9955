#include "rlx-printer-app/web/texts.h"

#include <array>
#include <string_view>

namespace rlx::printer_app {

namespace {

// PAPPL keeps its own translation where it has one, so no English text here is one of its keys.
constexpr std::array kTexts = std::to_array<Translation>({
    {"rlx-language", "ja"},
    {"Forms", "フォーム"},
    {"Jobs with proofs", "ジョブと校正刷り"},
    {"Try a form", "フォームを試す"},
    {"Back", "戻る"},
    {"Line {0}: {1}", "{0} 行目: {1}"},
    {"Drawing of the form {0}", "フォーム {0} の図"},
    {"too long to show", "長すぎるため表示できません"},
    {"Name of the form", "フォーム名"},
    {"Letters, digits, - and _.", "英数字、「-」、「_」が使えます。"},
    {"Text of the form", "フォームの定義"},
    {"The text is no UTF-8, so it can only be uploaded as a file.",
     "定義が UTF-8 ではないため、ファイルとしてのみアップロードできます。"},
    {"Or a file", "またはファイル"},
    {"Replace the form of this name, if there is one", "同じ名前のフォームがあれば置き換える"},
    {"Check and store", "検査して保存"},
    {"Add or change a form", "フォームの追加・変更"},
    {"Add a form", "フォームを追加"},
    {"A form's name has letters, digits, - and _, at most 255. Nothing was stored.",
     "フォーム名は英数字、「-」、「_」で 255 文字までです。保存していません。"},
    {"The form is longer than 64 kilobytes. Nothing was stored.",
     "フォームが 64 キロバイトを超えています。保存していません。"},
    {"There is a form of this name. Nothing was stored.",
     "同じ名前のフォームがあります。保存していません。"},
    {"The form has a fault. Nothing was stored.", "フォームに誤りがあります。保存していません。"},
    {"There is no form yet.", "フォームはまだありません。"},
    {"There is no such form.", "そのフォームはありません。"},
    {"Change", "変更"},
    {"Try it", "試す"},
    {"Delete this form", "このフォームを削除"},
    {"Delete the form {0}? Jobs that ask for it will fail.",
     "フォーム {0} を削除しますか。このフォームを使うジョブは印刷できなくなります。"},
    {"Waiting", "待機中"},
    {"Held", "保留"},
    {"Printing", "印刷中"},
    {"Cancelled", "取り消し"},
    {"Not printed", "印刷不可"},
    {"Printed", "印刷済み"},
    {"Cancel this job", "このジョブを取り消す"},
    {"Pages: {0}", "ページ数: {0}"},
    {"Nothing was kept of this job's run.", "このジョブの記録は残っていません。"},
    {"There will be a proof when the job has ended.", "校正刷りはジョブの終了後に表示されます。"},
    {"The document is no longer kept.", "文書はもう保存されていません。"},
    {"There is no such job, or it is no longer kept.",
     "そのジョブはないか、もう保存されていません。"},
    {"State", "状態"},
    {"Message", "メッセージ"},
    {"Messages", "フィルターのメッセージ"},
    {"Document", "文書"},
    {"User", "ユーザー"},
    {"Format", "形式"},
    {"Accepted", "受付"},
    {"Ended", "終了"},
    {"Pages printed", "印刷したページ"},
    {"Command line", "コマンド行"},
    {"There was no job yet.", "ジョブはまだありません。"},
    {"All jobs", "すべてのジョブ"},
    {"Page {0} of {1}", "{0} / {1} ページ"},
    {"Page {0}", "{0} ページ"},
    {"Page before", "前のページ"},
    {"Next page", "次のページ"},
    {"All pages", "すべてのページ"},
    {"What the printer gets", "プリンターに送る内容"},
    {"There is more; this is its beginning.", "これは先頭部分です。続きがあります。"},
    {"Too many pictures are being drawn. Please try again in a moment.",
     "作図が混み合っています。少し待ってからもう一度お試しください。"},
    {"Proof", "校正刷り"},
    {"The job is long. The proof shows its beginning.",
     "ジョブが長いため、先頭部分だけを示します。"},
    {"No form", "フォームなし"},
    {"Form", "フォーム"},
    {"Kind of printer", "プリンターの種類"},
    {"Text", "テキスト"},
    {"Encoding of the file", "ファイルの文字コード"},
    {"Show the proof", "校正刷りを表示"},
    {"This proof is no longer kept.", "この校正刷りはもう保存されていません。"},
    {"Nothing is printed: you see what would be.",
     "印刷はしません。印刷した場合の結果を表示します。"},
});

std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char byte : text) {
    if (byte == '"' || byte == '\\') {
      result += '\\';
    }
    result += byte;
  }
  return result + '"';
}

}  // namespace

std::span<const Translation> translations() {
  return kTexts;
}

std::string japanese_strings() {
  std::string all;
  for (const Translation& text : kTexts) {
    all += quoted(text.english) + " = " + quoted(text.japanese) + ";\n";
  }
  return all;
}

}  // namespace rlx::printer_app
