#include "ReportStyle.h"

namespace Qor::Tivor::Tool {

const char* const reportStyle = R"(:root {
  color-scheme: light dark;
  --ink: #1d2329; --soft: #5b6670; --paper: #ffffff; --band: #f3f5f7; --line: #d8dee4; --accent: #21618c;
}
@media (prefers-color-scheme: dark) {
  :root { --ink: #e3e7eb; --soft: #9aa5b1; --paper: #15191d; --band: #1f252b; --line: #333c45; --accent: #7fb8de; }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--paper); color: var(--ink); font: 16px/1.5 system-ui, sans-serif; }
main { max-width: 70rem; margin: 0 auto; padding: 2rem 1.5rem 4rem; }
h1 { margin: 0 0 1rem; font-size: 1.7rem; overflow-wrap: anywhere; }
h2 { margin: 2.5rem 0 .75rem; padding-bottom: .3rem; border-bottom: 2px solid var(--line); font-size: 1.25rem; }
h3 { margin: 1.5rem 0 .5rem; color: var(--accent); font-size: 1.05rem; overflow-wrap: anywhere; }
p, li { overflow-wrap: anywhere; }
p { color: var(--soft); }
.wide { overflow-x: auto; }
table { border-collapse: collapse; font-size: .9rem; font-variant-numeric: tabular-nums; }
th, td { padding: .35rem .8rem; border-bottom: 1px solid var(--line); text-align: left; vertical-align: top; }
th { font-weight: 600; }
td { white-space: pre-wrap; overflow-wrap: anywhere; }
.numbers { font-size: .82rem; }
.numbers th, .numbers td { white-space: nowrap; padding: .35rem .45rem; }
tr:nth-child(even) { background: var(--band); }
pre { margin: 0; padding: 1rem; overflow-x: auto; border-radius: 6px; background: var(--band); font-size: .8rem; }
img { display: block; max-width: 100%; height: auto; margin: .75rem 0; border: 1px solid var(--line); border-radius: 6px; }
)";

} // namespace Qor::Tivor::Tool
