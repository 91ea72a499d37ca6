#include "sample/pages.h"

namespace toplist::site {

// Figures reach the rules through custom properties that the templates set: --v, --clk and --rin of
// a row, --max of the list. So bars and rings are drawn without any script.
std::string_view style_sheet() {
  return R"css(:root {
  --paper: #f7f4ed; --card: #fffdf8; --ink: #23302f; --soft: #6b7672; --line: #e4ddcf;
  --accent: #0f766e; --warm: #c2612c; --shade: 0 1px 2px rgb(60 50 30 / .08), 0 6px 18px rgb(60 50 30 / .07);
}
@media (prefers-color-scheme: dark) {
  :root { --paper: #161b1c; --card: #1f2627; --ink: #e8ece9; --soft: #98a5a1; --line: #313b3c;
    --accent: #5ec4b6; --warm: #e79a6b; --shade: none; }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--paper); color: var(--ink);
  font: 16px/1.5 system-ui, "Segoe UI", Roboto, "Liberation Sans", "DejaVu Sans", sans-serif; }
a { color: inherit; text-decoration: none; }
main a:hover { color: var(--accent); text-decoration: underline; }
img { display: block; object-fit: cover; }
h1 { margin: 0; font: 700 clamp(1.8rem, 4vw, 2.6rem)/1.15 Georgia, "Liberation Serif", "DejaVu Serif", serif; }
h2 { margin: 0; font-size: 1.05rem; line-height: 1.3; }
p { margin: 0; }
[data-id=" "] { display: none !important; }

.top { position: sticky; top: 0; z-index: 1; display: flex; flex-wrap: wrap; align-items: center;
  gap: .4rem 2rem; padding: .8rem clamp(1rem, 4vw, 3rem); background: var(--card);
  border-bottom: 1px solid var(--line); }
.brand { font: 700 1.25rem Georgia, "Liberation Serif", "DejaVu Serif", serif; color: var(--accent); }
nav { display: flex; flex-wrap: wrap; gap: .2rem; }
nav a { padding: .3rem .8rem; border-radius: 99px; color: var(--soft); font-size: .95rem; }
nav a:hover { color: var(--ink); background: var(--paper); }
nav a[aria-current] { background: var(--accent); color: var(--card); }
main { max-width: 1120px; margin: 0 auto; padding: 2rem clamp(1rem, 4vw, 2rem) 3rem; }
.lead { margin: .4rem 0 1.6rem; color: var(--soft); font-size: 1.1rem; }
footer { padding: 1.5rem; border-top: 1px solid var(--line); color: var(--soft); font-size: .85rem;
  text-align: center; }
.more a { padding: 0 .3rem; color: var(--accent); }

.rank { color: var(--soft); font-variant-numeric: tabular-nums; }
.num { text-align: right; font-variant-numeric: tabular-nums; }
.shot { display: block; overflow: hidden; aspect-ratio: 4 / 3; background: var(--line); }
.shot img { width: 100%; height: 100%; transition: transform .3s; }
.shot:hover img { transform: scale(1.04); }
.meta { display: flex; flex-wrap: wrap; align-items: center; gap: .3rem .8rem; color: var(--soft);
  font-size: .82rem; }
.chip { --c: #64748b; padding: .1rem .6rem; border-radius: 99px; color: var(--c); font-size: .78rem;
  white-space: nowrap; background: color-mix(in srgb, var(--c) 14%, transparent); }
[data-topic="Outdoors"] { --c: #3f7d3a; } [data-topic="On the water"] { --c: #1d6fa5; }
[data-topic="Kitchen"] { --c: #b45309; } [data-topic="Photography"] { --c: #7c4d9e; }
[data-topic="Games"] { --c: #8a5a2b; } [data-topic="Garden"] { --c: #6a8f1f; }
[data-topic="Crafts"] { --c: #b83280; } [data-topic="Music"] { --c: #c0392b; }
[data-topic="Night sky"] { --c: #4f5bb5; }

.podiums { display: grid; grid-template-columns: repeat(3, 1fr); gap: 1.2rem; margin-bottom: 1.8rem; }
.podium { background: var(--card); border-radius: 14px; overflow: hidden; box-shadow: var(--shade); }
.podium .shot { aspect-ratio: 16 / 9; }
.podium .body { position: relative; padding: 1rem 1.1rem 1.1rem; }
.podium h2 { font-size: 1.2rem; padding-right: 2.6rem; }
.podium p { color: var(--soft); font-size: .92rem; margin-top: .3rem; }
.podium b { color: var(--ink); font-variant-numeric: tabular-nums; }
.medal { position: absolute; right: 1rem; top: -1.4rem; width: 2.8rem; height: 2.8rem; border-radius: 50%;
  display: grid; place-items: center; font: 700 1.25rem Georgia, "Liberation Serif", serif; color: #fff;
  background: #a8743a; border: 3px solid var(--card); }
.podium:nth-child(1) .medal { background: #d4a017; }
.podium:nth-child(2) .medal { background: #8b959c; }

.ranked { width: 100%; border-collapse: collapse; background: var(--card); border-radius: 14px;
  overflow: hidden; box-shadow: var(--shade); }
.ranked th { padding: .7rem .8rem; color: var(--soft); font-size: .78rem; font-weight: 600;
  text-align: left; text-transform: uppercase; letter-spacing: .04em; border-bottom: 1px solid var(--line); }
.ranked th.num { text-align: right; }
.ranked td { padding: .45rem .8rem; border-bottom: 1px solid var(--line); }
.ranked tr:hover td { background: color-mix(in srgb, var(--accent) 5%, transparent); }
.site > div { display: flex; align-items: center; gap: .8rem; }
.site img { border-radius: 6px; }
.site a { display: block; font-weight: 600; line-height: 1.25; }
.site small, .name small { display: block; color: var(--soft); font-size: .8rem; }
.bar { min-width: 130px; position: relative; }
.bar::after { content: ""; position: absolute; right: .8rem; bottom: .3rem; height: 4px; border-radius: 2px;
  width: calc((100% - 1.6rem) * var(--v) / var(--max)); background: var(--accent); }
.plain td { padding: .3rem .8rem; font-size: .9rem; }

.cards { display: grid; grid-template-columns: repeat(auto-fill, minmax(225px, 1fr)); gap: 1.3rem; }
.card { display: flex; flex-direction: column; background: var(--card); border-radius: 14px;
  overflow: hidden; box-shadow: var(--shade); }
.card h2 { padding: .9rem 1rem 0; }
.card p { padding: .25rem 1rem 0; color: var(--soft); font-size: .92rem; }
.card .meta { margin-top: auto; padding: .8rem 1rem 1rem; font-size: .8rem; }

.busy { margin: 0; padding: 0; list-style: none; }
.busy li { display: grid; grid-template-columns: 2rem minmax(180px, 1.1fr) 2fr 8.5rem 9.5rem; gap: 1rem;
  align-items: center; padding: .6rem 1rem; margin-bottom: .5rem; background: var(--card);
  border-radius: 10px; box-shadow: var(--shade); }
.name a { font-weight: 600; }
.track { height: 12px; border-radius: 6px; background: var(--line); overflow: hidden; }
.track i { display: block; height: 100%; border-radius: 6px; width: calc(100% * var(--v) / var(--max));
  background: linear-gradient(90deg, var(--accent), var(--warm)); }
.now b { font-size: 1.15rem; font-variant-numeric: tabular-nums; }
.day { color: var(--soft); font-size: .9rem; text-align: right; }

.entries { display: grid; gap: 1rem; }
.entry { display: grid; grid-template-columns: 150px 1fr auto; align-items: center; gap: 1.2rem;
  background: var(--card); border-radius: 14px; overflow: hidden; box-shadow: var(--shade); }
.entry .body p { color: var(--soft); margin-top: .2rem; }
.entry .body .meta { margin-top: .5rem; }
dl { display: grid; grid-template-columns: repeat(3, 5rem); gap: 1rem; margin: 0; padding-right: 1.5rem; text-align: right; }
dt { color: var(--soft); font-size: .75rem; text-transform: uppercase; letter-spacing: .04em; }
dd { margin: 0; font-weight: 600; font-size: 1.1rem; font-variant-numeric: tabular-nums; }

.tiles { display: grid; grid-template-columns: repeat(auto-fill, minmax(310px, 1fr)); gap: 1.1rem; }
.tile { --turn: calc(1turn * var(--clk) / var(--rin)); display: flex; gap: 1.1rem;
  align-items: center; padding: 1rem 1.1rem; background: var(--card); border-radius: 14px;
  box-shadow: var(--shade); }
.ring { flex: none; display: grid; place-items: center; width: 84px; height: 84px; border-radius: 50%;
  background: radial-gradient(circle, var(--card) 58%, transparent 60%),
    conic-gradient(var(--warm) var(--turn), var(--line) 0); }
.share::before { counter-reset: share calc(100 * var(--clk) / var(--rin) - .5); content: counter(share);
  font-weight: 700; font-size: 1.3rem; }
.tile .body p { color: var(--soft); font-size: .9rem; }
.tile .body .meta { margin-top: .45rem; font-size: .8rem; }

@media (max-width: 760px) {
  .wide { display: none; }
  .podiums { grid-template-columns: 1fr; }
  .bar { min-width: 90px; }
  .busy li { grid-template-columns: 1.6rem 1fr auto; gap: .3rem .8rem; }
  .busy .track { grid-row: 2; grid-column: 2 / 4; }
  .busy .day { display: none; }
  .entry { grid-template-columns: 96px 1fr; align-items: stretch; }
  .entry .shot { aspect-ratio: auto; }
  nav { flex-wrap: nowrap; overflow-x: auto; }
  nav a { white-space: nowrap; }
  .entry .body { padding: .8rem 1rem .8rem 0; }
  .entry dl { display: none; }
  .plain { display: block; overflow-x: auto; }
}
)css";
}

}  // namespace toplist::site
