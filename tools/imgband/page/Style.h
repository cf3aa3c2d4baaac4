#pragma once
// How a report's page looks: light and dark, wide and narrow, on paper.

/// Colours are told apart by those who confuse red and green too; text keeps a contrast of at least 4.5.
inline constexpr char kPageStyle[] = R"css(
:root{color-scheme:light dark;
--surface:#fff;--ink:#1b1f24;--muted:#57606a;--rule:#d3d9e0;--lane:#e3e8ed;--free:#e9edf1;--bar:#5b9bc4;
--alarm:#a4262c;--good:#1a6640;--hatch:#0004}
@media(prefers-color-scheme:dark){:root{
--surface:#14171a;--ink:#e6e9ec;--muted:#a2abb5;--rule:#3a424a;--lane:#323a41;--free:#262d34;--bar:#39759c;
--alarm:#ff9a94;--good:#7ed6a5}}
*{box-sizing:border-box;print-color-adjust:exact;-webkit-print-color-adjust:exact}
body{margin:0;background:var(--surface);color:var(--ink);overflow-wrap:anywhere;
font:15px/1.5 system-ui,-apple-system,"Segoe UI",Roboto,"Noto Sans",
"Hiragino Sans","Yu Gothic UI",Meiryo,"Noto Sans JP","Noto Sans CJK JP",sans-serif}
main{max-width:1088px;margin:0 auto;padding:32px 24px 64px}
h1{font-size:28px;line-height:1.25;margin:0 0 12px}
h2{font-size:20px;margin:0 0 4px}
h3,h4{font-size:16px;margin:28px 0 2px}
h4{font-size:14px;margin-top:16px}
p{margin:0 0 12px}
section{margin-top:36px;padding-top:16px;border-top:1px solid var(--rule)}
section>p,.program{color:var(--muted);max-width:48em}
dl,dd,ul,figure{margin:0;padding:0;list-style:none}
dt,small,.words,figcaption{color:var(--muted);font-size:13px;font-weight:400}
.badge{display:inline-block;padding:2px 12px;border:1px solid;border-radius:99px;font-weight:600}
.badge.good{color:var(--good)}
.alarm,.error h2{color:var(--alarm)}
.facts,.legend{display:flex;flex-wrap:wrap;gap:10px 32px}
.error{padding:14px 18px;border:1px solid var(--alarm);border-left-width:5px}
.error>p{color:inherit}
.figures{margin-top:28px;display:grid;grid-template-columns:repeat(auto-fit,minmax(145px,1fr));gap:20px 24px}
.figures>div{border-top:3px solid var(--bar);padding-top:6px}
.figures dd{font-size:24px;font-weight:600}
.figures small{display:block}
.c0{--c:#56b4e9}.c1{--c:#e69f00}.c2{--c:#1ba784}.c3{--c:#d48fb3}.c4{--c:#f0e442}.c5{--c:#e5713a}
.h1{--h:repeating-linear-gradient(45deg,var(--hatch) 0 1px,#0000 1px 6px)}
.h2{--h:radial-gradient(circle,var(--hatch) 1.5px,#0000 2px) 0 0/7px 7px}
.h3{--h:repeating-linear-gradient(135deg,var(--hatch) 0 1px,#0000 1px 6px)}
.h4{--h:repeating-linear-gradient(var(--hatch) 0 1px,#0000 1px 5px)}
i{background:var(--h,linear-gradient(#0000,#0000)),var(--c)}
.free{--c:var(--free)}
.memory{--c:var(--bar)}
.chart{display:flow-root;margin:12px 32px 0 76px;font-size:13px}
.lanes li{position:relative;white-space:nowrap;margin-bottom:2px}
.lanes i{position:absolute;top:0;bottom:0;min-width:2px;background:var(--lane)}
.lanes span{position:relative;padding:0 4px}
.lanes span span{padding:0}
.plot{position:relative;height:240px;margin:28px 0 32px}
.plot>*{position:absolute}
.plot>i{inset:0}
.y,.ceiling{left:0;right:0;border-top:1px solid var(--rule)}
.x{bottom:-6px;height:6px;border-left:1px solid var(--muted)}
.x span,.y span{position:absolute;color:var(--muted);white-space:nowrap}
.x span{top:6px;transform:translateX(-50%)}
.y span{right:100%;padding-right:8px;transform:translateY(-50%)}
.ceiling{border-top:2px dashed var(--ink)}
.ceiling>span{position:absolute;right:0;bottom:3px;background:var(--surface);padding:0 4px;font-weight:600}
.legend i{display:inline-block;width:22px;height:14px;margin-right:8px;vertical-align:-2px}
.bars li{display:grid;grid-template-columns:minmax(0,230px) minmax(0,1fr) 180px;column-gap:20px;align-items:center;
margin-top:10px}
.bars p{margin:0}
.meter{background:var(--free);border:0}
.meter i{display:block;height:14px}
.amount{text-align:right;white-space:nowrap}
.bars .held{display:block;margin-top:2px}
.moments{display:grid;grid-template-columns:repeat(auto-fill,minmax(112px,1fr));gap:12px;margin-top:6px}
figcaption{font-size:12px}
figcaption strong{display:block}
.image{position:relative;background:var(--free);outline:1px solid var(--muted)}
.image i{position:absolute;left:0;right:0;min-height:3px}
.framed{outline:2px dashed var(--ink)}
details{margin-top:12px}
summary{cursor:pointer;font-weight:600}
summary::first-letter,h4::first-letter{text-transform:uppercase}
.values{display:grid;grid-template-columns:repeat(auto-fill,minmax(min(290px,100%),1fr));column-gap:40px;font-size:13px}
.values div{display:flex;justify-content:space-between;gap:16px;padding:4px 0;border-bottom:1px solid var(--rule)}
.values dd{text-align:right}
.record{margin-top:12px;padding-left:12px;border-left:3px solid var(--rule)}
table{border-collapse:collapse;font-size:13px;margin-top:8px}
th,td{padding:4px 20px 4px 0;border-bottom:1px solid var(--rule);text-align:left;vertical-align:top}
th{color:var(--muted)}
@media(max-width:719px){
main{padding:20px 16px 48px}
.chart{margin-left:64px;margin-right:24px;font-size:12px}
.x:nth-of-type(even) span{display:none}
.bars li{grid-template-columns:minmax(0,1fr) auto}
.meter{grid-row:2;grid-column:1/-1}
table,tbody,tr,td{display:block}
thead{display:none}
tr{padding:8px 0;border-bottom:1px solid var(--rule)}
td{display:flex;justify-content:space-between;gap:16px;border:0;padding:1px 0;text-align:right}
td:before{content:attr(data-label);color:var(--muted);text-align:left;flex:none}}
@media print{figure,tr,.chart,.bars li{break-inside:avoid}}
)css";
