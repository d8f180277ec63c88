// SPDX-License-Identifier: MIT
#include "coagulation/report/pagestyle.h"

namespace coagulation::report {

QString pageStyle()
{
    return R"css(
:root {
  color-scheme: light dark;
  --paper: #ffffff;
  --panel: #f4f6f8;
  --ink: #1c2329;
  --quiet: #55606b;
  --rule: #d5dbe1;
  --link: #0b57a4;
  --good: #1a6b3c;
  --good-panel: #e6f4ea;
  --look: #7a4b00;
  --look-panel: #fdf1d8;
  --bad: #a3192b;
  --bad-panel: #fce8ea;
  --curve: #0b57a4;
  --earlier: #8a5a00;
}
@media screen and (prefers-color-scheme: dark) {
  :root {
    --paper: #14181c;
    --panel: #1e242a;
    --ink: #e4e9ee;
    --quiet: #a5b0bb;
    --rule: #3a434c;
    --link: #86bdf5;
    --good: #84d6a2;
    --good-panel: #14301f;
    --look: #f0c36b;
    --look-panel: #35280c;
    --bad: #ff9ea8;
    --bad-panel: #3d151a;
    --curve: #86bdf5;
    --earlier: #e0ad5a;
  }
}
* { box-sizing: border-box; }
html { -webkit-text-size-adjust: 100%; text-size-adjust: 100%; }
body {
  margin: 0 auto;
  max-width: 72rem;
  padding: 1.5rem 1.25rem 4rem;
  background: var(--paper);
  color: var(--ink);
  font: 1rem/1.5 system-ui, -apple-system, 'Segoe UI', Roboto, 'Noto Sans', 'Liberation Sans', sans-serif;
  overflow-wrap: anywhere;
}
h1, h2, h3, h4 { line-height: 1.25; margin: 2rem 0 0.6rem; font-weight: 600; }
h1 { font-size: 1.7rem; margin-top: 0; }
h2 { font-size: 1.35rem; margin-top: 3rem; padding-top: 0.9rem; border-top: 1px solid var(--rule); }
h3 { font-size: 1.1rem; }
h4 { font-size: 1rem; }
p, ul, ol, dl, figure { margin: 0.5rem 0 0.9rem; }
figure { margin-left: 0; margin-right: 0; }
ul, ol { padding-left: 1.4rem; }
li { margin: 0.2rem 0; }
a { color: var(--link); text-underline-offset: 0.15em; }
a:focus-visible, summary:focus-visible, .wide:focus-visible { outline: 3px solid var(--link); outline-offset: 2px; }
code, .literal, .digest, .log { font-family: ui-monospace, 'Cascadia Mono', 'Liberation Mono', 'DejaVu Sans Mono', monospace; font-size: 0.9em; }
.literal { white-space: pre-wrap; }
.quiet, figcaption { color: var(--quiet); }
.good { color: var(--good); }
.look { color: var(--look); }
.bad { color: var(--bad); }
.verdict { display: flex; flex-wrap: wrap; gap: 0.2rem 0.9rem; align-items: baseline; padding: 0.9rem 1.1rem; border-left: 0.4rem solid; border-radius: 0.25rem; font-size: 1.15rem; margin: 1rem 0; }
.verdict .words { color: var(--ink); flex: 1 1 16rem; }
.verdict .mark { font-weight: 700; white-space: nowrap; }
.verdict.good { background: var(--good-panel); }
.verdict.look { background: var(--look-panel); }
.verdict.bad { background: var(--bad-panel); }
.glance { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 14rem), 1fr)); gap: 0.8rem; margin: 1rem 0; padding: 0; list-style: none; }
.glance li { margin: 0; background: var(--panel); border-radius: 0.25rem; padding: 0.7rem 0.9rem; }
.glance .question { color: var(--quiet); font-size: 0.9rem; }
.glance .answer { margin: 0.15rem 0 0; font-weight: 600; }
nav ul { list-style: none; display: flex; flex-wrap: wrap; gap: 0.2rem 1.2rem; padding: 0; }
.wide { overflow-x: auto; margin: 0.5rem 0 1rem; }
table { border-collapse: collapse; width: 100%; font-size: 0.94rem; }
caption { text-align: left; color: var(--quiet); padding: 0.2rem 0; }
th, td { text-align: left; vertical-align: baseline; padding: 0.3rem 0.7rem 0.3rem 0; border-bottom: 1px solid var(--rule); }
thead th { color: var(--quiet); font-weight: 600; border-bottom: 2px solid var(--rule); }
tbody th { font-weight: 500; }
.number { text-align: right; font-variant-numeric: tabular-nums; white-space: nowrap; overflow-wrap: normal; }
.counts { width: auto; }
.counts th, .counts td { padding-right: 1.4rem; }
thead th { overflow-wrap: normal; white-space: normal; }
.short { overflow-wrap: normal; }
.name { min-width: 7rem; }
.counts .name { min-width: 12rem; }
.values { min-width: 12rem; }
.pair { display: inline-block; margin-right: 1.1rem; max-width: 100%; }
.pair .column { color: var(--quiet); }
.tag { font-weight: 600; white-space: nowrap; overflow-wrap: normal; }
details { margin: 0.5rem 0 1rem; }
summary { cursor: pointer; padding: 0.25rem 0; color: var(--link); }
.log { list-style: none; padding: 0; }
.log li { padding: 0.1rem 0.4rem; margin: 0; white-space: pre-wrap; }
.log .warning { background: var(--look-panel); }
.log .time { color: var(--quiet); }
:target { background: var(--look-panel); scroll-margin-top: 1rem; }
.curve-facts { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 22rem), 1fr)); gap: 0.5rem 2rem; align-items: start; }
.plot { display: block; width: 100%; height: auto; max-width: 40rem; color: var(--ink); }
.plot text { fill: currentColor; font-size: 15px; }
.plot .across { text-anchor: middle; }
.plot .unit.across, .plot .tick.down { text-anchor: end; }
.plot .tick { fill: var(--quiet); font-variant-numeric: tabular-nums; }
.plot .grid { stroke: var(--rule); stroke-width: 1; }
.plot .axis { fill: none; stroke: var(--quiet); stroke-width: 1.5; }
.plot .curve { fill: none; stroke-width: 2.5; stroke-linejoin: round; }
.plot .curve.after { stroke: var(--curve); }
.plot .curve.before { stroke: var(--earlier); stroke-dasharray: 8 5; }
.plot .point { fill: var(--paper); stroke: currentColor; stroke-width: 2; }
.plot .excluded { fill: none; stroke: var(--bad); stroke-width: 2.5; }
.plot .outlier { fill: none; stroke: var(--bad); stroke-width: 2; }
@media (max-width: 40rem) {
  body { padding: 1rem 0.9rem 3rem; }
  .name, .values { min-width: 5.5rem; }
  .counts .name { min-width: 8rem; }
  .counts th, .counts td { padding-right: 0.7rem; }
  .plot text { font-size: 19px; }
}
@media print {
  :root { color-scheme: light; }
  body { max-width: none; padding: 0; font-size: 10pt; }
  h2, h3, h4, caption, thead { break-after: avoid; }
  tr, figure, li, .verdict { break-inside: avoid; }
  thead { display: table-header-group; }
  .wide { overflow: visible; }
  nav { display: none; }
  a { color: inherit; text-decoration: none; }
  details::details-content { content-visibility: visible; display: block; block-size: auto; }
  .verdict, .log .warning { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
}
)css";
}

} // namespace coagulation::report
