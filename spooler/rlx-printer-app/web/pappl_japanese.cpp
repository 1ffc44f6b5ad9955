// Stands in the place of PAPPL's function of this name, as password_hash.cpp does with another one.
//
// PAPPL 1.3.1's Japanese was made by a machine that knew no printers: its "Jobs" are vacancies, its
// "Landscape" is news. What an operator sees is corrected here; PAPPL keeps its own strings where
// an application adds others with the same key.
#include <dlfcn.h>
#include <pappl/pappl.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "rlx-printer-app/web/texts.h"

namespace rlx::printer_app {

namespace {

constexpr auto kCorrections = std::to_array<Translation>({
    {"Auto", "自動"},
    {"Cancel All Jobs", "すべてのジョブをキャンセル"},
    {"Cancel Job", "ジョブをキャンセル"},
    {"Canceled at %s", "%s にキャンセル"},
    {"Canceling", "キャンセル中"},
    {"Changes saved.", "変更を保存しました。"},
    {"Change Log Level", "ログレベルを変更"},
    {"Configuration", "設定"},
    {"Confirm Cancel All", "すべてキャンセルする"},
    {"Confirm Delete Printer", "プリンターを削除する"},
    {"Contact", "連絡先"},
    {"Create New TLS Certificate", "新しい TLS 証明書を作成"},
    {"Create TLS Certificate Request", "TLS 証明書の要求を作成"},
    {"Custom Size", "ユーザー定義サイズ"},
    {"Default printer set.", "既定のプリンターを設定しました。"},
    {"Debugging", "デバッグ"},
    {"Hold Job", "ジョブを保留"},
    {"Hold New Jobs", "新しいジョブを保留"},
    {"Holding new jobs.", "新しいジョブを保留します。"},
    {"Informational", "情報"},
    {"Install TLS Certificate", "TLS 証明書をインストール"},
    {"Job #", "ジョブ番号"},
    {"Job canceled.", "ジョブをキャンセルしました。"},
    {"Job held.", "ジョブを保留しました。"},
    {"Job released.", "ジョブの保留を解除しました。"},
    {"Jobs", "ジョブ"},
    {"Landscape", "横"},
    {"Location", "設置場所"},
    {"Logging", "ログ"},
    {"Logs", "ログ"},
    {"Name", "名前"},
    {"No jobs in history.", "ジョブの履歴はありません。"},
    {"Not set", "未設定"},
    {"Organization", "組織"},
    {"Passwords do not match.", "パスワードが一致しません。"},
    {"Pause Printing", "印刷を一時停止"},
    {"Portrait", "縦"},
    {"Print Test Page", "テストページを印刷"},
    {"Printer paused.", "プリンターを一時停止しました。"},
    {"Printer pausing.", "プリンターを一時停止しています。"},
    {"Printer resuming.", "プリンターを再開しています。"},
    {"Printing Defaults", "印刷の既定値"},
    {"Queued at %s", "%s に受付"},
    {"Release Held New Jobs", "新しいジョブの保留を解除"},
    {"Release Job", "ジョブの保留を解除"},
    {"Released held new jobs.", "新しいジョブの保留を解除しました。"},
    {"Reprint Job", "もう一度印刷"},
    {"Reprinted job.", "もう一度印刷します。"},
    {"Resume Printing", "印刷を再開"},
    {"Reverse Landscape", "横 (逆向き)"},
    {"Reverse Portrait", "縦 (逆向き)"},
    {"Set Access Password", "パスワードを設定"},
    {"Change Access Password", "パスワードを変更"},
    {"Set as Default", "既定に設定"},
    {"Started at %s", "%s に開始"},
    {"Status", "状態"},
    {"Unknown", "不明"},
    {"Width", "幅"},
    {"default printer", "既定のプリンター"},
    {"holding new jobs", "新しいジョブを保留中"},
    {"%ddpi", "%d dpi"},
    {"%s (%s%s) from %s", "%s (%s%s)、%s"},
    {"Media", "用紙"},
    {"Configure Media", "用紙の設定"},
    {"media", "用紙"},
    {"media-source.auto", "自動"},
    {"media-source.tray-2", "トレイ 2"},
    {"media-type.stationery", "普通紙"},
    {"media.iso_a3_297x420mm", "A3"},
    {"media.iso_a4_210x297mm", "A4"},
    {"media.iso_a5_148x210mm", "A5"},
    {"media.jis_b4_257x364mm", "JIS B4"},
    {"media.jis_b5_182x257mm", "JIS B5"},
    {"media.na_letter_8.5x11in", "レター"},
    {"orientation-requested", "印刷の向き"},
    {"print-color-mode", "カラーモード"},
    {"print-content-optimize.auto", "自動"},
    {"print-content-optimize.photo", "写真"},
    {"print-quality", "印刷品質"},
    {"print-quality.5", "高品質"},
    {"print-scaling.auto", "自動"},
    {"print-scaling.auto-fit", "自動で合わせる"},
    {"print-scaling.fill", "用紙いっぱいに"},
    {"print-scaling.fit", "用紙に合わせる"},
    {"printer-resolution", "解像度"},
    {"sides", "両面印刷"},
    {"sides.one-sided", "しない"},
    {"sides.two-sided-long-edge", "長辺とじ"},
    {"sides.two-sided-short-edge", "短辺とじ"},
});

using Lookup = const char* (*)(pappl_loc_t*, const char*);

/// PAPPL's own function.
Lookup pappls_lookup() {
  static const auto lookup = reinterpret_cast<Lookup>(dlsym(RTLD_NEXT, "papplLocGetString"));
  return lookup;
}

}  // namespace

}  // namespace rlx::printer_app

extern "C" const char* papplLocGetString(pappl_loc_t* loc, const char* key) {
  using rlx::printer_app::kCorrections;
  const auto lookup = rlx::printer_app::pappls_lookup();
  if (loc == nullptr || key == nullptr || lookup == nullptr) {
    return key;
  }
  if (std::string_view(lookup(loc, "rlx-language")) == "ja") {
    const auto* const found =
        std::find_if(kCorrections.begin(), kCorrections.end(),
                     [key](const auto& text) { return std::string_view(text.english) == key; });
    if (found != kCorrections.end()) {
      return found->japanese;
    }
  }
  return lookup(loc, key);
}
