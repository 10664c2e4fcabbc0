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

// A table may hold hundreds of functions: each chart is drawn when it comes into view, all of them for paper.
const articles = [...document.querySelectorAll('article')];
const watcher = new IntersectionObserver(entries => {
  for (const entry of entries.filter(each => each.isIntersecting)) {
    draw(entry.target);
    watcher.unobserve(entry.target);
  }
}, {rootMargin: '600px'});
articles.forEach(article => watcher.observe(article));
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
