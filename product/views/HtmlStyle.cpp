#include "HtmlParts.h"

namespace views::html {

// States are told apart by colour, and without it: by sign and word, by a filled, hatched, dashed or plain
// box, and by brightness. Texts keep a contrast of 4.5:1 or more against what is behind them, and what can be
// clicked is 24 pixels high or more. A table that goes on beyond an edge of its box has a shadow there: the
// shadows stay with the box, and covers that move with the table hide them at its ends. Nothing here may need
// escaping, since the page is XML as well.
std::string_view StyleSheet() {
    return R"css(
:root {
  color-scheme: light dark;
  --page: #f5f6f8; --card: #ffffff; --line: #d3d8df; --text: #1b1f24; --faint: #545d68; --link: #0b57a4;
  --ok: #19692f; --busy: #0b57a4; --shade: #00000029;
  --warning: #fff0c2; --on-warning: #4f3500; --edge-warning: #9a6700; --hatch: #f3d479;
  --critical: #b3211a; --on-critical: #ffffff; --edge-critical: #7d120d; --text-critical: #b3211a;
  --unknown: #e6e9ee; --on-unknown: #39424d; --edge-unknown: #545d68;
}
@media (prefers-color-scheme: dark) {
  :root {
    --page: #0f1318; --card: #191f26; --line: #36404b; --text: #e6e9ee; --faint: #a5b0bc; --link: #7db8f5;
    --ok: #71d88b; --busy: #7db8f5; --shade: #ffffff24;
    --warning: #453300; --on-warning: #ffdd7a; --edge-warning: #e0a800; --hatch: #6b5000;
    --critical: #ff8178; --on-critical: #240302; --edge-critical: #ffc2bd; --text-critical: #ff8f87;
    --unknown: #2c343d; --on-unknown: #d3dae2; --edge-unknown: #a5b0bc;
  }
}
* { box-sizing: border-box; }
html { -webkit-text-size-adjust: 100%; }
body {
  margin: 0 auto; padding: 1rem; max-width: 110rem; background: var(--page); color: var(--text);
  font: 0.9375rem/1.45 system-ui, -apple-system, "Segoe UI", Roboto, "Helvetica Neue", sans-serif;
  overflow-wrap: anywhere;
}
h1 { margin: 0 0 0.5rem; font-size: 1.125rem; font-weight: 600; color: var(--faint); }
h2 { margin: 1.5rem 0 0.5rem; font-size: 1.125rem; }
h3 { margin: 1.5rem 0 0.25rem; font-size: 1rem; }
h4 { margin: 0.75rem 0 0.375rem; font-size: 0.9375rem; }
h4 small, .note, dt { color: var(--faint); font-size: 0.8125rem; font-weight: 400; }
.ways a { display: inline-block; min-height: 24px; min-width: 24px; padding: 0.15rem 0.4rem 0.15rem 0; }
.failure { color: var(--text-critical); font-weight: 600; margin: 0.25rem 0 0; overflow-wrap: anywhere; }
p { margin: 0.375rem 0; }
ul, ol { margin: 0; padding: 0; list-style: none; }
a {
  display: inline-block; min-width: 1.5rem; min-height: 1.5rem; line-height: 1.5rem; color: var(--link);
  text-underline-offset: 0.15em;
}
a:focus-visible, summary:focus-visible, .scroll:focus-visible { outline: 3px solid var(--link); outline-offset: 2px; }
.aside {
  position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%); white-space: nowrap;
}
.sign {
  display: inline-block; flex: none; width: 1.25em; height: 1.25em; margin-right: 0.4em; border-radius: 0.2em;
  text-align: center; font-weight: 700; font-size: 0.875em; line-height: 1.25em; color: var(--ok);
}
.sign.busy { color: var(--busy); }
.sign.accepted { color: var(--faint); }
.sign.warning { color: var(--on-warning); background: var(--warning); box-shadow: inset 0 0 0 1.5px var(--edge-warning); }
.sign.critical { color: var(--on-critical); background: var(--critical); }
.sign.unknown { color: var(--on-unknown); background: var(--unknown); box-shadow: inset 0 0 0 1px var(--edge-unknown); }
.rollup {
  display: flex; align-items: center; gap: 0.75rem; padding: 0.75rem 1rem; border: 2px solid var(--line);
  border-radius: 0.5rem; background: var(--card);
}
.rollup p { margin: 0; }
.rollup b { display: block; font-size: 1.375rem; line-height: 1.2; letter-spacing: 0.02em; }
.rollup .sign { margin: 0; font-size: 1.5rem; }
.rollup .sign.critical { background: var(--on-critical); color: var(--critical); }
.rollup.ok { border-color: var(--ok); }
.rollup.ok b { color: var(--ok); }
.rollup.warning { background: var(--warning); color: var(--on-warning); border-color: var(--edge-warning); }
.rollup.critical { background: var(--critical); color: var(--on-critical); border-color: var(--edge-critical); }
.rollup.unknown { background: var(--unknown); color: var(--on-unknown); border: 2px dotted var(--edge-unknown); }
.findings li { display: flex; align-items: baseline; gap: 0.25rem; padding: 0.25rem 0; border-top: 1px solid var(--line); }
.findings li:first-child { border-top: 0; }
.findings .accepted { color: var(--faint); }
.controller { margin: 1rem 0; padding: 0 1rem; background: var(--card); border: 1px solid var(--line);
  border-radius: 0.5rem; }
.controller[open] { padding-bottom: 1rem; }
.controller > summary {
  display: flex; flex-wrap: wrap; align-items: baseline; gap: 0.125rem 0.5rem; margin: 0 -1rem; padding: 0.625rem 1rem;
  cursor: pointer; border-radius: 0.5rem;
}
.controller > summary::before { content: "\25B8"; color: var(--faint); }
.controller[open] > summary::before { content: "\25BE"; }
.controller > summary::-webkit-details-marker { display: none; }
.controller > summary h2 { margin: 0; font-size: 1rem; }
.controller > summary .sign { margin: 0; }
dl { display: flex; flex-wrap: wrap; gap: 0.25rem 2rem; margin: 0.25rem 0 0; }
dd { margin: 0; }
.slots { display: grid; gap: 0.375rem; grid-template-columns: repeat(auto-fill, minmax(5.25rem, 1fr)); }
.slot {
  position: relative; min-height: 5.5rem; padding: 0.25rem 0.375rem 0.375rem; border: 1px solid var(--line);
  border-top: 0.3125rem solid var(--ok); border-radius: 0.25rem; background: var(--card);
  font-size: 0.75rem; line-height: 1.3;
}
.slot .no { color: inherit; }
.slot .sign { position: absolute; top: 0.25rem; right: 0.25rem; margin: 0; font-size: 0.8125rem; }
.slot b, .slot .size, .slot .state { display: block; }
.slot b { font-size: 0.9375rem; }
.slot.busy { border-top-color: var(--busy); }
:target { outline: 3px solid var(--link); outline-offset: 1px; }
.slot.warning {
  color: var(--on-warning); border: 2px solid var(--edge-warning); border-top-width: 0.3125rem;
  background: var(--warning) repeating-linear-gradient(135deg, var(--hatch) 0 0.3125rem, transparent 0.3125rem 0.625rem)
    bottom / 100% 0.375rem no-repeat; padding-bottom: 0.625rem;
}
.slot.critical { color: var(--on-critical); background: var(--critical); border: 2px solid var(--edge-critical);
  border-top-width: 0.3125rem; }
.slot .sign.critical { background: var(--on-critical); color: var(--critical); }
.slot.unknown { color: var(--on-unknown); background: var(--unknown); border: 2px dotted var(--edge-unknown); }
.slot.empty { color: var(--faint); background: transparent; border: 1px dashed var(--line); }
.slot.empty .state { margin-top: 0.75rem; font-style: italic; }
.slot.warning .state, .slot.critical .state, .slot.unknown .state { font-weight: 600; }
.groups { display: grid; gap: 0.75rem; grid-template-columns: repeat(auto-fill, minmax(min(19rem, 100%), 1fr)); }
.group { padding: 0.5rem 0.75rem; border: 1px solid var(--line); border-radius: 0.375rem; }
.group h4 { margin: 0 0 0.375rem; }
.group.critical { border: 2px solid var(--edge-critical); }
.group.warning { border: 2px solid var(--edge-warning); }
.group.unknown { border: 2px dotted var(--edge-unknown); }
.lds li { padding: 0.125rem 0; }
.lds .size { color: var(--faint); }
.lds .critical .state, tr.critical .state { color: var(--text-critical); font-weight: 600; }
.lds .warning .state, tr.warning .state { font-weight: 600; }
.members { display: flex; flex-wrap: wrap; gap: 0 0.75rem; margin-top: 0.375rem; font-size: 0.8125rem; line-height: 1.5rem; }
.scroll {
  position: relative; overflow-x: auto; border: 1px solid var(--line); border-radius: 0.375rem;
  background:
    linear-gradient(to right, var(--card) 1rem, transparent) left / 2.5rem 100% no-repeat local,
    linear-gradient(to left, var(--card) 1rem, transparent) right / 2.5rem 100% no-repeat local,
    linear-gradient(to right, var(--shade), transparent) left / 1rem 100% no-repeat scroll,
    linear-gradient(to left, var(--shade), transparent) right / 1rem 100% no-repeat scroll var(--card);
}
table { min-width: 100%; border-collapse: collapse; font-size: 0.8125rem; overflow-wrap: normal; }
th, td { padding: 0.25rem 0.625rem; text-align: left; vertical-align: top; white-space: nowrap; max-width: 24rem;
  overflow: hidden; text-overflow: ellipsis; font-variant-numeric: tabular-nums; }
thead th { color: var(--faint); font-weight: 600; white-space: normal; vertical-align: bottom; overflow-wrap: normal; border-bottom: 1px solid var(--line); }
tbody tr + tr > * { border-top: 1px solid var(--line); }
tbody th { font-weight: 600; }
td.state { white-space: normal; min-width: 10rem; }
.line { width: 7.5rem; height: 1.5rem; vertical-align: middle; }
.line path { fill: none; stroke: var(--link); stroke-width: 1.5px; stroke-linecap: round; vector-effect: non-scaling-stroke; }
details details, main > details:not(.controller) { margin: 0.375rem 0; }
details summary { padding: 0.125rem 0; cursor: pointer; }
summary h3 { display: inline; }
.controller > details { margin-top: 1.25rem; }
.controller > details[open] > summary { margin-bottom: 0.375rem; }
details .scroll { margin-top: 0.375rem; }
@media (max-width: 30rem) {
  body { padding: 0.5rem; }
  .controller { padding: 0 0.625rem; }
  td.state { min-width: 7rem; }
  .controller > summary { margin: 0 -0.625rem; padding: 0.625rem; }
}
@media print {
  :root { color-scheme: light; }
  * { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
  body { padding: 0; max-width: none; background: #ffffff; font-size: 9pt; }
  details::details-content { content-visibility: visible; display: block; block-size: auto; }
  .controller > summary::before, .controller[open] > summary::before { content: none; }
  summary { list-style: none; break-after: avoid; }
  .scroll { overflow: visible; border: 0; background: none; }
  table { width: 100%; font-size: 6pt; }
  th, td { white-space: normal; overflow-wrap: break-word; padding: 1pt 2pt 1pt 0; }
  td.state { min-width: 8em; }
  .slot, .group, tr, .findings li { break-inside: avoid; }
  h2, h3, h4 { break-after: avoid; }
  a { color: inherit; text-decoration: none; }
}
)css";
}

}  // namespace views::html
