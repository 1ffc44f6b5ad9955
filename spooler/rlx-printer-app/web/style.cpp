#include "rlx-printer-app/web/style.h"

namespace rlx::printer_app {

const char* const kStyle = R"(
.rlx { font-family: "Open Sans", "DejaVu Sans", sans-serif; line-height: 1.4; }
.rlx:lang(ja) { font-family: "Open Sans", "Noto Sans CJK JP", "IPAPGothic", sans-serif; }
.rlx h1 .btn, .rlx h2 .btn { vertical-align: middle; }
.rlx h1 { overflow-wrap: anywhere; }
.rlx form.rlx { display: block; max-width: 60em; }
.rlx a { overflow-wrap: anywhere; }
.rlx a.btn { display: inline-block; margin: 2px 4px 2px 0; white-space: normal; }
.rlx label { display: block; max-width: 100%; min-width: 0; }
.rlx label input[type=checkbox] { margin: 0 6px 0 0; }
.rlx textarea, .rlx select, .rlx input[type=text], .rlx input[type=file] {
  box-sizing: border-box; max-width: 100%; }
.rlx textarea { border: 1px solid #888; border-radius: 6px; display: block; font-size: 14px;
  line-height: 1.4; margin-top: 4px; padding: 8px 10px; width: 100%; }
.rlx-row { display: flex; flex-wrap: wrap; gap: 12px 28px; }
.rlx-grid { display: grid; grid-template-columns: repeat(auto-fill, minmax(190px, 1fr));
  gap: 20px; margin: 16px 0; }
.rlx-card { display: flex; flex-direction: column; gap: 6px; min-width: 0; }
.rlx-card a { color: inherit; text-decoration: none; }
.rlx-card b { display: block; margin-top: 6px; overflow-wrap: anywhere; }
.rlx-frame { display: flex; align-items: center; justify-content: center; height: 240px;
  background: #f2f2f2; border: 1px solid #ccc; border-radius: 6px; padding: 8px;
  box-sizing: border-box; }
.rlx-frame:hover { border-color: #555; }
.rlx-frame img { max-width: 100%; max-height: 100%; background: white;
  box-shadow: 0 1px 4px rgba(0,0,0,.3); }
.rlx-broken { color: #b00020; font-size: 72px; font-weight: bold; }
.rlx-fault { color: #b00020; overflow-wrap: anywhere; }
p.rlx-fault { background: #fdecee; border-left: 4px solid #b00020; padding: 8px 12px; }
.rlx-hint { color: #555; }
.rlx-name { font-weight: normal; color: #555; overflow-wrap: anywhere; }
.rlx-two { display: grid; grid-template-columns: minmax(0, 3fr) minmax(0, 2fr); gap: 28px; }
.rlx-large img, .rlx-sheet { max-width: 100%; background: white;
  box-shadow: 0 1px 6px rgba(0,0,0,.35); }
.rlx-text, .rlx-dump { background: #f6f6f6; border: 1px solid #ddd; border-radius: 6px;
  padding: 10px; overflow-x: auto; font-size: 13px; line-height: 1.45; white-space: pre; }
.rlx-text i { color: #888; display: inline-block; font-style: normal; margin-right: 12px;
  min-width: 2em; text-align: right; user-select: none; }
.rlx-text mark { background: #fbd3d8; }
.rlx-jobs { list-style: none; margin: 16px 0; padding: 0; }
.rlx-jobs li { display: grid;
  grid-template-columns: minmax(0, 3fr) 8em minmax(0, 1fr) 8em 11em 11em;
  gap: 4px 14px; align-items: center; border-top: 1px solid #ddd; padding: 10px 4px; }
.rlx-jobs li:hover { background: #f6f6f6; }
.rlx-jobs small { grid-column: 1 / -1; color: #b00020; overflow-wrap: anywhere; }
.rlx-jobs span { overflow-wrap: anywhere; }
.rlx-jobs .rlx-pages { white-space: nowrap; }
.rlx-jobs time { color: #555; white-space: nowrap; }
.rlx-jobs form.rlx, .rlx-facts form.rlx { display: inline-block; margin-left: 8px; }
.rlx-state { border-radius: 10px; display: inline-block; font-size: 14px; padding: 1px 10px;
  text-align: center; white-space: nowrap; }
.rlx-good { background: #dcf3e0; color: #14532d; }
.rlx-bad { background: #fbd3d8; color: #7f0014; }
.rlx-open { background: #e6e6e6; color: #333; }
.rlx-facts { border-collapse: collapse; margin: 12px 0; width: 100%; }
.rlx-facts th { text-align: left; vertical-align: top; font-weight: normal; color: #555;
  padding: 4px 18px 4px 0; white-space: nowrap; width: 1%; }
.rlx-facts td { padding: 4px 0; overflow-wrap: anywhere; }
.rlx-pager a, .rlx-pager b { display: inline-block; min-width: 1.6em; padding: 4px;
  text-align: center; }
.header div.nav, .header2 div.nav { line-height: 40px; }
@media only screen and (max-width: 950px) {
  .rlx-jobs li { grid-template-columns: minmax(0, 1fr) auto; }
  .rlx-jobs time { grid-column: 1 / -1; }
}
@media only screen and (max-width: 700px) {
  .rlx-two { grid-template-columns: minmax(0, 1fr); }
  .rlx-grid { grid-template-columns: repeat(2, minmax(0, 1fr)); gap: 14px; }
  .rlx-frame { height: 190px; }
  .header div.nav { font-size: 15px; line-height: 32px; }
  .header a.btn, .header span.active { padding: 0 10px 0 0; }
  .header a.btn img { margin-right: 0; }
  .rlx-facts th, .rlx-facts td { display: block; padding: 0; width: auto; }
  .rlx-facts td { padding-bottom: 8px; }
}
)";

}  // namespace rlx::printer_app
