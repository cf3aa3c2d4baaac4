#pragma once
// How a report's page looks: light and dark, wide and narrow, on paper.

/// Colours are told apart by those who confuse red and green too; text keeps a contrast of at least 4.5.
inline constexpr char kPageStyle[] = R"css(
:root{color-scheme:light dark;
--surface:#fff;--ink:#1b1f24;--muted:#57606a;--rule:#d3d9e0;--grid:#e7ebef;--lane:#e9edf1;--free:#eef1f4;
--bar:#0072b2;--second:#d55e00;--alarm:#a4262c;--good:#1a6640;--on:#0d0f12;
--c0:#56b4e9;--c1:#e69f00;--c2:#1ba784;--c3:#d48fb3;--c4:#f0e442;--c5:#e5713a}
@media(prefers-color-scheme:dark){:root{
--surface:#14171a;--ink:#e6e9ec;--muted:#a2abb5;--rule:#3a424a;--grid:#272d33;--lane:#2b3239;--free:#262d34;
--bar:#56b4e9;--second:#f0913f;--alarm:#ff9a94;--good:#7ed6a5;
--c0:#4fa5d6;--c1:#d29200;--c2:#1a9878;--c3:#c384a5;--c4:#cfc43a;--c5:#d56a38}}
*{box-sizing:border-box}
body{margin:0;background:var(--surface);color:var(--ink);overflow-wrap:anywhere;
font:15px/1.5 system-ui,-apple-system,"Segoe UI",Roboto,"Noto Sans",
"Hiragino Sans","Yu Gothic UI",Meiryo,"Noto Sans JP","Noto Sans CJK JP",sans-serif}
main{max-width:1088px;margin:0 auto;padding:32px 24px 64px}
h1{font-size:28px;line-height:1.25;margin:0 0 12px;font-weight:650}
h2{font-size:20px;line-height:1.3;margin:0 0 4px;font-weight:650}
h3{font-size:16px;line-height:1.4;margin:28px 0 2px;font-weight:650}
small{font-size:13px;font-weight:400;color:var(--muted)}
p{margin:0 0 12px}
section{margin-top:44px;padding-top:18px;border-top:1px solid var(--rule)}
section>p,h3+p,.program{color:var(--muted);max-width:48em;text-wrap:pretty}
.program{margin-bottom:4px;font-size:13px}
dl,dd,ul,figure{margin:0;padding:0}
li{list-style:none}
dt{color:var(--muted);font-size:13px}
.badge{display:inline-block;margin:0 0 16px;padding:2px 12px;border:1px solid;border-radius:99px;color:var(--good);
font-size:14px;font-weight:600}
.badge.failed{color:var(--alarm)}
.facts{display:flex;flex-wrap:wrap;gap:10px 32px}
.error{margin-top:24px;padding:14px 18px;border:1px solid var(--alarm);border-left-width:5px;border-radius:4px}
.error h2{color:var(--alarm)}
.error>p{color:inherit;max-width:none}
.figures{display:grid;grid-template-columns:repeat(auto-fit,minmax(160px,1fr));gap:24px;margin-top:36px}
.figures>div{border-top:3px solid var(--bar);padding-top:8px}
.figures dd{font-size:13px;color:var(--muted)}
.figures .large{font-size:26px;line-height:1.3;font-weight:600;color:var(--ink)}
.large,.number,.amount{font-variant-numeric:tabular-nums}
svg{display:block}
.chart{width:100%;height:auto;margin-top:12px;overflow:visible}
.chart text,.moments{font-family:inherit}
.narrow{display:none}
.patterns{position:absolute;width:0;height:0}
text{fill:var(--ink)}
.tick,.unit{fill:var(--muted)}
.strong{font-weight:600;paint-order:stroke;stroke:var(--surface);stroke-width:4px;stroke-linejoin:round}
.on{fill:var(--on);font-weight:600}
.grid{stroke:var(--grid)}
.axis{stroke:var(--muted)}
.ceiling{stroke:var(--ink);stroke-width:1.5;stroke-dasharray:7 4}
.step{fill:var(--lane)}
.hatch{stroke:#000;stroke-opacity:.22;fill:none}
.curve{fill:none;stroke:var(--bar);stroke-width:2;stroke-linejoin:round;stroke-linecap:round}
.curve.mapped{stroke:var(--second);stroke-dasharray:5 4}
.end{fill:var(--bar)}
.end.mapped{fill:var(--second)}
.bar{fill:var(--bar)}
.track{fill:var(--free)}
.quarter{fill:var(--surface)}
.legend{display:flex;flex-wrap:wrap;gap:4px 22px;margin-top:10px;font-size:14px}
.legend li{display:flex;align-items:center;gap:8px;min-width:0}
.swatch{width:22px;height:14px;flex:none;border:1px solid var(--muted)}
.meter{width:100%;height:14px}
.bars li{display:grid;grid-template-columns:minmax(0,300px) minmax(0,1fr) 150px;column-gap:20px;align-items:center;
padding:7px 0}
.bars p{margin:0}
.bars .words{grid-column:1/-1;font-size:14px;color:var(--muted)}
.amount{text-align:right;white-space:nowrap;font-size:14px}
.role{color:var(--muted);font-size:14px}
.bars .scale{padding:0}
.scale p{grid-column:2;display:flex;justify-content:space-between;gap:8px;border-top:1px solid var(--muted);
font-size:13px;color:var(--muted)}
.moments{display:flex;flex-wrap:wrap;gap:16px}
figure{width:150px;font-size:13px}
figcaption strong{display:block}
.image{fill:var(--free);stroke:var(--muted)}
.band{fill:var(--bar)}
.frame{fill:var(--c1);stroke:var(--ink);stroke-dasharray:2 2}
summary{cursor:pointer;margin-top:28px}
summary h3{display:inline;margin:0}
.scroll{overflow-x:auto;margin-top:8px}
table{border-collapse:collapse;font-size:13px;line-height:1.4}
th,td{padding:5px 20px 5px 0;border-bottom:1px solid var(--grid);text-align:left;vertical-align:top}
thead th{color:var(--muted);font-weight:600;vertical-align:bottom;border-bottom-color:var(--muted)}
th,.number,.word{overflow-wrap:normal}
.number{text-align:right}
td.number,td.word{white-space:nowrap}
td.text{min-width:9em}
td:last-child,th:last-child{padding-right:0}
.values{columns:3 260px;column-gap:40px;font-size:13px;margin-top:8px}
.values div{display:flex;justify-content:space-between;gap:16px;padding:4px 0;border-bottom:1px solid var(--grid);
break-inside:avoid}
.values dt{flex:none}
.values dd{text-align:right;min-width:0}
.after{margin-top:14px}
.group th{padding-top:14px;overflow-wrap:anywhere}
.more{color:var(--muted)}
@media(max-width:899px){
.wide{display:none}
.narrow{display:block;max-width:480px}}
@media(max-width:719px){
main{padding:20px 16px 48px}
h1{font-size:24px}
.figures{grid-template-columns:repeat(auto-fit,minmax(140px,1fr));gap:18px 20px}
.figures .large{font-size:22px}
.bars li{grid-template-columns:minmax(0,1fr) auto}
.meter,.scale p{grid-column:1/-1}
.name{order:-2}
.amount{order:-1}
.scroll{overflow:visible}
table,tbody,tr,td,.group th{display:block}
thead{display:none}
tr{padding:8px 0;border-bottom:1px solid var(--rule)}
tr.group{border:0;padding-bottom:0}
th,td{border:0;padding:1px 0}
td{display:flex;justify-content:space-between;gap:16px;text-align:right}
td:before{content:attr(data-label);color:var(--muted);text-align:left;flex:none;max-width:45%}
td.number,td.word{white-space:normal}
td:empty{display:none}}
@media print{
main{padding:0;max-width:none}
h2,h3{break-after:avoid}
svg,figure,tr,.bars li,.figures>div{break-inside:avoid}}
)css";
