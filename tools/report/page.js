'use strict';
(() => {
  const data = JSON.parse(document.getElementById('data').textContent);
  const canDraw = typeof Chart !== 'undefined';

  // Okabe and Ito's colours, told apart with any colour vision; darkened or lightened to show on the ground.
  const palette = {
    light: ['#0072b2', '#d55e00', '#009e73', '#b5468c', '#8a6d00', '#3a9bd0', '#444444', '#7a4bc2'],
    dark: ['#56b4e9', '#ff8c42', '#2ed3a2', '#e79bc9', '#f0d64a', '#9ad1ff', '#d0d0d0', '#b79cf5'],
  };
  const dashes = [[], [7, 4], [2, 3], [10, 3, 2, 3]];
  const points = ['circle', 'rect', 'triangle', 'rectRot'];

  // ---- Theme ----

  const root = document.documentElement;
  const prefersDark = window.matchMedia('(prefers-color-scheme: dark)');
  let printing = false;
  const isDark = () => !printing && (root.dataset.theme ? root.dataset.theme === 'dark' : prefersDark.matches);
  const colours = () => palette[isDark() ? 'dark' : 'light'];
  const property = name => getComputedStyle(root).getPropertyValue(name).trim();

  // ---- Series of a chart ----

  /** A row's cells that tell its line from the others of its chart. */
  function lineName(row, view) {
    const words = view.lines.filter(name => name in row.parameters).map(name => `${name}=${row.parameters[name]}`);
    if (row.cache) words.push(row.cache);
    return words.join(' ');
  }

  /** The lines of a function's chart: one for each run and combination of the other parameters. */
  function linesOf(view) {
    const lines = new Map();
    const names = [];
    for (const row of view.rows) {
      if (row.clocks === undefined) continue;
      const name = lineName(row, view);
      if (!names.includes(name)) names.push(name);
      const key = `${row.run}\n${name}`;
      if (!lines.has(key)) lines.set(key, {name, run: row.run, rows: []});
      lines.get(key).rows.push(row);
    }
    const runs = [...new Set([...lines.values()].map(line => line.run))];
    for (const line of lines.values()) {
      const combination = names.indexOf(line.name);
      const run = runs.indexOf(line.run);
      // Colour tells what varies most; the stroke tells the runs apart where colour is taken.
      line.colour = names.length > 1 ? combination : run;
      line.stroke = names.length > 1 && runs.length > 1 ? run : Math.floor(line.colour / palette.light.length);
      line.label = [runs.length > 1 ? data.runs[line.run].label : '', line.name].filter(Boolean).join(': ');
    }
    return [...lines.values()];
  }

  const positionOf = (row, view) => view.axis ? row.parameters[view.axis.parameter] : data.runs[row.run].label;

  function datasetOf(line, view) {
    const numeric = view.axis && view.axis.numeric;
    const rows = numeric
      ? [...line.rows].sort((a, b) => positionOf(a, view) - positionOf(b, view)) : line.rows;
    return {
      label: line.label || 'clocks',
      data: rows.map(row => ({x: numeric ? positionOf(row, view) : String(positionOf(row, view)), y: row.clocks, row})),
      line,
      borderDash: dashes[line.stroke % dashes.length],
      pointStyle: points[line.stroke % points.length],
      borderWidth: 2,
      pointRadius: 3.5,
      clip: 8, // points at the ends of the axis stay whole
    };
  }

  function paint(dataset, numeric) {
    const list = colours();
    const colour = list[dataset.line.colour % list.length];
    dataset.borderColor = colour;
    dataset.pointBackgroundColor = colour;
    dataset.backgroundColor = numeric || dataset.line.stroke === 0 ? colour : colour + '88';
  }

  // ---- Tooltips: all cells of a row ----

  function cellsOf(row) {
    const cells = Object.entries(row.parameters).map(([name, value]) => `${name} = ${value}`);
    cells.push(`${row.clocks} clocks per ${row.per || 'call'}`);
    if (row.microseconds !== undefined) cells.push(`${row.microseconds} µs per call`);
    if (row.mflops !== undefined) cells.push(`${row.mflops} MFlops`);
    if (row.comment) cells.push(row.comment);
    if (row.result) cells.push(`result ${row.result}`);
    for (const [name, value] of Object.entries(row.other || {})) cells.push(`${name} = ${value}`);
    if (data.runs.length > 1) cells.push(`run ${data.runs[row.run].label}`);
    return cells;
  }

  // ---- Axes ----

  function horizontalAxis(view) {
    const title = {display: true, text: view.axis ? view.axis.parameter : 'run'};
    if (!view.axis || !view.axis.numeric) return {type: 'category', title, labels: categoriesOf(view)};
    const sizes = [...new Set(view.rows.map(row => positionOf(row, view)))].sort((a, b) => a - b);
    return {
      type: view.axis.logarithmic ? 'logarithmic' : 'linear',
      title, min: sizes[0], max: sizes[sizes.length - 1],
      // The sizes themselves, not round numbers between them.
      afterBuildTicks: axis => { axis.ticks = sizes.map(value => ({value})); },
      ticks: {callback: value => String(value), autoSkip: true, maxRotation: 50},
    };
  }

  const categoriesOf = view => [...new Set(view.rows.map(row => String(positionOf(row, view))))];

  function verticalAxis(view) {
    const figures = view.rows.map(row => row.clocks).filter(clocks => clocks > 0);
    const wide = Math.max(...figures) >= 10 * Math.min(...figures);
    const title = {display: true, text: `clocks per ${view.rows[0].per || 'call'}`};
    if (!wide || !view.axis || !view.axis.numeric) return {type: 'linear', title, beginAtZero: true};
    return {
      type: 'logarithmic', title,
      afterBuildTicks: axis => { axis.ticks = axis.ticks.filter(({value}) => /^[125]/.test(value.toExponential())); },
      ticks: {callback: value => String(value)},
    };
  }

  function themeAxis(axis) {
    axis.grid = {color: property('--line')};
    axis.ticks = {...axis.ticks, color: property('--faint')};
    axis.title = {...axis.title, color: property('--faint')};
  }

  // ---- Charts ----

  const charts = new Map();

  function draw(article) {
    const view = views.get(article.dataset.function);
    const canvas = article.querySelector('canvas');
    if (!canvas || charts.has(view.name)) return;
    const numeric = Boolean(view.axis && view.axis.numeric);
    const datasets = linesOf(view).map(line => datasetOf(line, view));
    datasets.forEach(dataset => paint(dataset, numeric));
    const scales = {x: horizontalAxis(view), y: verticalAxis(view)};
    Object.values(scales).forEach(themeAxis);
    const chart = new Chart(canvas, {
      type: numeric ? 'line' : 'bar',
      data: {datasets},
      options: {
        animation: false,
        maintainAspectRatio: false,
        interaction: {mode: 'nearest', intersect: true},
        scales,
        plugins: {
          legend: {display: false},
          tooltip: {callbacks: {
            title: items => items[0].dataset.label,
            label: item => cellsOf(item.raw.row),
          }},
        },
      },
    });
    charts.set(view.name, chart);
    drawLegend(article, chart);
  }

  function sample(dataset) {
    const dash = dataset.borderDash.join(' ');
    return `<svg width="26" height="8" aria-hidden="true"><line x1="0" y1="4" x2="26" y2="4" stroke-width="3"` +
      ` stroke="${dataset.borderColor}" stroke-dasharray="${dash}"/></svg>`;
  }

  function drawLegend(article, chart) {
    const legend = article.querySelector('.legend');
    legend.replaceChildren();
    if (chart.data.datasets.length < 2) return;
    chart.data.datasets.forEach((dataset, i) => {
      const button = document.createElement('button');
      button.type = 'button';
      button.innerHTML = sample(dataset);
      button.append(dataset.label);
      button.setAttribute('aria-pressed', String(chart.isDatasetVisible(i)));
      button.addEventListener('click', () => {
        chart.setDatasetVisibility(i, !chart.isDatasetVisible(i));
        button.setAttribute('aria-pressed', String(chart.isDatasetVisible(i)));
        chart.update();
      });
      legend.append(button);
    });
  }

  /** Gives the charts the theme's colours, all of them or those of some functions. */
  function repaint(names = [...charts.keys()]) {
    for (const name of names) {
      const chart = charts.get(name);
      chart.data.datasets.forEach(dataset => paint(dataset, chart.config.type === 'line'));
      Object.values(chart.options.scales).forEach(themeAxis);
      chart.update();
      drawLegend(chart.canvas.closest('article'), chart);
    }
  }

  // ---- Rows: filter and sort ----

  const body = document.querySelector('#rows tbody');
  const rows = [...body.rows].map(element => ({element, text: element.textContent.toLowerCase()}));
  const filter = document.getElementById('filter');
  const grade = document.getElementById('grade');

  function wanted({element, text}, words) {
    const graded = grade.value === '' ||
      (grade.value === 'hot' ? element.dataset.hot === '1' : /warned|failed/.test(element.className));
    return graded && words.every(word => text.includes(word));
  }

  function applyFilter() {
    const words = filter.value.toLowerCase().split(/\s+/).filter(Boolean);
    const functions = new Set();
    let count = 0;
    for (const row of rows) {
      const show = wanted(row, words);
      row.element.hidden = !show;
      if (show) {
        ++count;
        functions.add(row.element.dataset.function);
      }
    }
    for (const article of articles) article.hidden = !functions.has(article.dataset.function);
    document.getElementById('shown').value = `${count} of ${rows.length} rows`;
  }

  function compareCells(a, b) {
    const x = a.dataset.value ?? a.textContent;
    const y = b.dataset.value ?? b.textContent;
    if ((x === '') !== (y === '')) return x === '' ? 1 : -1; // empty cells last
    const difference = Number(x) - Number(y);
    return Number.isNaN(difference) ? x.localeCompare(y, 'en', {numeric: true}) : difference;
  }

  function sortBy(title) {
    const column = title.cellIndex;
    const down = title.getAttribute('aria-sort') === 'ascending';
    for (const other of title.parentElement.cells) other.removeAttribute('aria-sort');
    title.setAttribute('aria-sort', down ? 'descending' : 'ascending');
    rows.sort((a, b) => (down ? -1 : 1) * compareCells(a.element.cells[column], b.element.cells[column]));
    body.append(...rows.map(row => row.element));
  }

  // ---- Start ----

  const views = new Map(data.functions.map(view => [view.name, {...view, rows: []}]));
  for (const row of data.rows) views.get(row.function).rows.push(row);
  const articles = [...document.querySelectorAll('article[data-function]')];

  filter.addEventListener('input', applyFilter);
  grade.addEventListener('change', applyFilter);
  document.getElementById('filters').addEventListener('submit', event => event.preventDefault());
  for (const title of document.querySelectorAll('#rows th')) {
    title.querySelector('button').addEventListener('click', () => sortBy(title));
  }
  document.getElementById('theme').addEventListener('click', () => {
    root.dataset.theme = isDark() ? 'light' : 'dark';
    repaint();
  });
  prefersDark.addEventListener('change', () => repaint());
  applyFilter();

  if (canDraw) {
    // A table may hold hundreds of functions: each chart is drawn when it comes into view, all of them for paper.
    const watcher = new IntersectionObserver(entries => {
      for (const entry of entries) {
        if (entry.isIntersecting) {
          draw(entry.target);
          watcher.unobserve(entry.target);
        }
      }
    }, {rootMargin: '600px'});
    articles.forEach(article => watcher.observe(article));
    window.addEventListener('beforeprint', () => {
      printing = true;
      const before = [...charts.keys()];
      articles.forEach(draw);
      if (root.dataset.theme === 'dark' || prefersDark.matches) repaint(before);
    });
    window.addEventListener('afterprint', () => {
      printing = false;
      repaint();
    });
  }
})();
