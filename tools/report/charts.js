// ---- Functions by domain: small multiples ----

const canDraw = typeof Chart !== 'undefined';
const dashes = [[], [7, 4], [2, 3], [10, 3, 2, 3]];
const points = ['circle', 'rect', 'triangle', 'rectRot'];
const mostLines = 8;
const chartWidth = 250; // pixels of the axis in a narrow card
const hiddenRuns = new Set();

const domains = new Map();
for (const view of views.values()) domains.set(view.domain, [...(domains.get(view.domain) || []), view]);

/** A function of one combination is told by its line of the overview. */
function hasChart(view) {
  return canDraw && new Set(view.rows.filter(row => row.clocks > 0).map(combinationOf)).size > 1;
}

/** A row's cells that tell its line from the others of its chart. */
const lineName = (row, view) => [...view.lines.filter(name => name in row.parameters)
  .map(name => `${name}=${row.parameters[name]}`), ...(view.axis ? [row.cache] : [])].filter(Boolean).join(' ');
const positionOf = (row, view) => view.axis ? row.parameters[view.axis.parameter] : row.cache || combinationOf(row);
const isCurve = view => Boolean(view.axis && view.axis.quantity);

/** Lines of a chart: for each run one a combination of the other parameters, or where they are many, their mean. */
function linesOf(view) {
  const measured = view.rows.filter(row => row.clocks > 0);
  const names = [...new Set(measured.map(row => lineName(row, view)))];
  const runs = [...new Set(measured.map(row => row.run))];
  view.combinations = names;
  view.summed = names.length > 1 && names.length * runs.length > mostLines;
  const lines = new Map();
  for (const row of measured) {
    const name = view.summed ? '' : lineName(row, view);
    const key = `${row.run}\n${name}`;
    if (!lines.has(key)) lines.set(key, {run: row.run, name, combination: Math.max(0, names.indexOf(name)), at: new Map()});
    const {at} = lines.get(key);
    const position = positionOf(row, view);
    at.set(position, [...(at.get(position) || []), row]);
  }
  return [...lines.values()];
}

function datasetOf(line, view) {
  const curve = isCurve(view);
  let places = [...line.at];
  if (curve) places = places.sort(([a], [b]) => a - b);
  return {
    label: [manyRuns ? data.runs[line.run].label : '', line.name].filter(Boolean).join(': ') || 'clocks',
    data: places.map(([x, rows]) => ({x: curve ? x : String(x), y: geometricMean(rows.map(row => row.clocks)), rows})),
    line,
    // Colour tells the runs apart, the stroke the combinations; with one run colour tells those.
    stroke: manyRuns ? line.combination : 0,
    hidden: hiddenRuns.has(line.run),
    borderDash: curve && manyRuns ? dashes[line.combination % dashes.length] : [],
    pointStyle: points[(manyRuns ? line.combination : 0) % points.length],
    borderWidth: curve ? 2 : 1, maxBarThickness: 28,
    // Points by the hundred cover the line and each other.
    pointRadius: places.length > 100 ? 0 : 3, pointHitRadius: 4,
    clip: 8, // points at the ends of the axis stay whole
  };
}

function paint(dataset) {
  const colour = colourOf(manyRuns ? dataset.line.run : dataset.line.combination);
  dataset.borderColor = colour;
  dataset.pointBackgroundColor = colour;
  dataset.backgroundColor = colour + ['', 'a0', '60', '30'][dataset.stroke % 4];
}

function cellsOf(rows) {
  if (rows.length > 1) {
    return [`${digits(geometricMean(rows.map(row => row.clocks)))} clocks: mean of ${rows.length} combinations`,
      `from ${range(rows.map(row => row.clocks))}`];
  }
  const [row] = rows;
  const cells = Object.entries(row.parameters).map(([name, value]) => `${name} = ${value}`);
  cells.push(`${digits(row.clocks)} clocks per ${row.per || 'call'}`);
  if (row.microseconds !== undefined) cells.push(`${row.microseconds} µs per call`);
  if (row.mflops !== undefined) cells.push(`${row.mflops} MFlops`);
  if (row.comment) cells.push(row.comment);
  if (row.result) cells.push(`result ${row.result}`);
  for (const [name, value] of Object.entries(row.other || {})) cells.push(`${name} = ${value}`);
  return cells;
}

/** Sizes to be written at an axis: the ends, and of those between what leaves room for its text. */
function legible(sizes, logarithmic) {
  const scale = logarithmic ? Math.log : x => x;
  const [low, high] = [scale(sizes[0]), scale(sizes[sizes.length - 1])];
  const place = size => high > low ? (scale(size) - low) / (high - low) * chartWidth : 0;
  const room = (a, b) => (String(a).length + String(b).length) / 2 * 7 + 8;
  const end = sizes[sizes.length - 1];
  const kept = [sizes[0]];
  for (const size of sizes.slice(1, -1)) {
    const last = kept[kept.length - 1];
    if (place(size) - place(last) >= room(size, last) && place(end) - place(size) >= room(size, end)) kept.push(size);
  }
  return sizes.length > 1 ? [...kept, end] : kept;
}

function horizontalAxis(view) {
  const title = {display: Boolean(view.axis), text: view.axis?.parameter};
  if (!isCurve(view)) {
    const places = [...new Set(view.rows.map(row => positionOf(row, view)))];
    const sorted = view.axis?.numeric ? places.sort((a, b) => a - b) : places;
    return {type: 'category', title, labels: sorted.map(String), grid: {display: false}, ticks: {maxRotation: 50}};
  }
  const sizes = [...new Set(view.rows.map(row => positionOf(row, view)))].sort((a, b) => a - b);
  const {logarithmic} = view.axis;
  return {
    type: logarithmic ? 'logarithmic' : 'linear', title, min: sizes[0], max: sizes[sizes.length - 1],
    // The sizes themselves, not round numbers between them.
    afterBuildTicks: axis => { axis.ticks = legible(sizes, logarithmic).map(value => ({value})); },
    ticks: {callback: value => String(value), autoSkip: false, maxRotation: 0},
  };
}

/** 1, 2 and 5 times powers of ten, or the powers alone where there is no room for more. */
function roundNumbers(low, high) {
  const numbers = [];
  for (let power = Math.floor(Math.log10(low)); power <= Math.log10(high); ++power) {
    for (const digit of [1, 2, 5]) numbers.push(Number(`${digit}e${power}`));
  }
  const inside = numbers.filter(number => number >= low && number <= high);
  return inside.length <= 7 ? inside : inside.filter(number => /^1e/.test(number.toExponential()));
}

function verticalAxis(view, figures) {
  const wide = Math.max(...figures) >= 20 * Math.min(...figures);
  const title = {display: true, text: `clocks per ${view.rows[0].per || 'call'}`};
  if (!wide || !isCurve(view)) return {type: 'linear', title, beginAtZero: true, ticks: {maxTicksLimit: 6}};
  const [min, max] = [Math.min(...figures) / 1.2, Math.max(...figures) * 1.2];
  return {
    type: 'logarithmic', title, min, max,
    afterBuildTicks: axis => { axis.ticks = roundNumbers(min, max).map(value => ({value})); },
    ticks: {callback: value => String(value), autoSkip: false},
  };
}

function themeAxis(axis) {
  axis.grid = {...axis.grid, color: property('--line')};
  axis.ticks = {...axis.ticks, color: property('--faint')};
  axis.title = {...axis.title, color: property('--faint')};
}

const charts = new Map();

function draw(article) {
  const view = views.get(article.dataset.function);
  if (charts.has(view.name)) return;
  const datasets = linesOf(view).map(line => datasetOf(line, view));
  datasets.forEach(paint);
  const scales = {x: horizontalAxis(view), y: verticalAxis(view, datasets.flatMap(({data}) => data.map(({y}) => y)))};
  Object.values(scales).forEach(themeAxis);
  const chart = new Chart(article.querySelector('canvas'), {
    type: isCurve(view) ? 'line' : 'bar',
    data: {datasets},
    options: {
      animation: false,
      maintainAspectRatio: false,
      interaction: {mode: 'nearest', intersect: true},
      scales,
      plugins: {
        legend: {display: false},
        tooltip: {callbacks: {title: items => items[0].dataset.label, label: item => cellsOf(item.raw.rows)}},
      },
    },
  });
  charts.set(view.name, chart);
  drawLegend(article, view, chart);
}

/** A sample of a stroke or a fill. */
const sample = (colour, dash, curve) => {
  const shape = curve
    ? `<line x1="0" y1="5" x2="24" y2="5" stroke-width="3" stroke="${colour}" stroke-dasharray="${dash.join(' ')}"/>`
    : `<rect x="6" width="12" height="10" fill="${colour}" stroke="${colour.slice(0, 7)}"/>`;
  const holder = make('span');
  holder.innerHTML = `<svg width="24" height="10" aria-hidden="true">${shape}</svg>`;
  return holder.firstChild;
};

/** The combinations of a chart; the runs stand once for all charts. */
function drawLegend(article, view, chart) {
  const legend = article.querySelector('.legend');
  legend.replaceChildren();
  if (view.summed) {
    legend.append(`means of ${view.combinations.length} combinations of ${view.lines.join(', ') || 'cache modes'}`);
    return;
  }
  if (view.combinations.length < 2) return;
  view.combinations.forEach((name, i) => {
    const mine = chart.data.datasets.map((dataset, at) => ({dataset, at})).filter(({dataset}) => dataset.line.combination === i);
    if (!mine.length) return;
    const {dataset} = mine[0];
    const colour = manyRuns ? property('--faint') + ['', 'a0', '60', '30'][dataset.stroke % 4].repeat(isCurve(view) ? 0 : 1)
      : dataset.borderColor;
    const seen = mine.some(({at}) => chart.isDatasetVisible(at));
    const button = make('button', {type: 'button', 'aria-pressed': String(seen)},
      sample(colour, dataset.borderDash, isCurve(view)), name);
    button.addEventListener('click', () => {
      mine.forEach(({at, dataset: each}) => chart.setDatasetVisibility(at, !seen && !hiddenRuns.has(each.line.run)));
      chart.update();
      drawLegend(article, view, chart);
    });
    legend.append(button);
  });
}

function showRunLegend() {
  byId('legend').replaceChildren(...(manyRuns && canDraw ? data.runs : []).map((run, i) => {
    const button = make('button', {type: 'button', 'aria-pressed': String(!hiddenRuns.has(i))},
      sample(colourOf(i), [], false), run.label);
    button.addEventListener('click', () => {
      if (!hiddenRuns.delete(i)) hiddenRuns.add(i);
      for (const chart of charts.values()) {
        chart.data.datasets.forEach((dataset, at) => {
          if (dataset.line.run === i) chart.setDatasetVisibility(at, !hiddenRuns.has(i));
        });
        chart.update();
      }
      showRunLegend();
    });
    return button;
  }));
}

/** Gives the page's charts the theme's colours. */
function repaint() {
  showRunLegend();
  showOverview();
  repaintSections();
  for (const [name, chart] of charts) {
    chart.data.datasets.forEach(paint);
    Object.values(chart.options.scales).forEach(themeAxis);
    chart.update();
    drawLegend(chart.canvas.closest('article'), views.get(name), chart);
  }
}

function articleOf(view) {
  return make('article', {id: anchorOf(view.name), 'data-function': view.name},
    make('h3', {}, functionLink(view.name), ...badges(view)),
    make('div', {class: 'plot'}, make('canvas', {role: 'img', 'aria-label': 'Clocks of ' + view.name})),
    make('div', {class: 'legend'}), ...sectionParts(view));
}

function showFunctions() {
  for (const [domain, list] of domains) {
    const charted = list.filter(hasChart);
    if (!charted.length) continue;
    byId('functions').append(make('div', {class: 'family', 'data-domain': domain, id: 'domain-' + domain},
      make('h2', {}, domain), make('div', {class: 'grid'}, ...charted.map(articleOf))));
  }
}
