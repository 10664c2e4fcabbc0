// ---- Start ----

showRuns();
showProblems();
showSections();
showCalls();
showFunctions();
explainOverview();
showOverview();
showRunLegend();
showTitles();
byId('short').hidden = !data.rows.some(row => row.short);
// A page without tables has its sections alone.
if (!data.runs.length) document.querySelectorAll('#runs, #overview, #shown, main > :last-child, label:has(#grade)').forEach(part => { part.hidden = true; });
if (!data.functions.some(view => view.hot)) grade.querySelector('[value=hot]').remove();
recall();
applyFilter();
goToRow();

filter.addEventListener('input', applyFilter);
grade.addEventListener('change', applyFilter);
byId('filters').addEventListener('submit', event => event.preventDefault());
window.addEventListener('hashchange', goToRow);
let waiting = false;
frame.addEventListener('scroll', () => {
  if (waiting) return;
  waiting = true;
  requestAnimationFrame(() => {
    waiting = false;
    showLines();
  });
});
window.addEventListener('resize', () => {
  if (!printing) showLines();
});
byId('theme').addEventListener('click', () => {
  root.dataset.theme = isDark() ? 'light' : 'dark';
  repaint();
  applyFilter();
});
prefersDark.addEventListener('change', repaint);

// A table may hold hundreds of functions: each chart is drawn when it comes near the view, one at a time while the page
// has nothing else to do, so that scrolling does not wait for them; all of them are drawn for paper.
const articles = [...document.querySelectorAll('article')];
const near = new Set();
const longestWait = 100; // milliseconds, on a page that never rests
const whenIdle = window.requestIdleCallback ? work => requestIdleCallback(work, {timeout: longestWait}) : work => setTimeout(work, 16);
function drawNext() {
  const [article] = near;
  if (!article) return;
  near.delete(article);
  watcher.unobserve(article);
  draw(article);
  if (near.size) whenIdle(drawNext);
}
const watcher = new IntersectionObserver(entries => {
  const resting = !near.size;
  for (const {isIntersecting, target: article} of entries) isIntersecting ? near.add(article) : near.delete(article);
  if (resting && near.size) whenIdle(drawNext);
}, {rootMargin: '600px'});
articles.forEach(article => watcher.observe(article));
// The first charts take up to three times as long as the others: not while somebody scrolls.
for (const article of articles.slice(0, 3)) whenIdle(() => draw(article));
window.addEventListener('beforeprint', () => {
  printing = true;
  articles.filter(article => !article.hidden).forEach(draw);
  repaint();
  for (const chart of charts.values()) chart.resize();
  showAllLines();
});
window.addEventListener('afterprint', () => {
  printing = false;
  repaint();
  for (const chart of charts.values()) chart.resize();
  applyFilter();
});
