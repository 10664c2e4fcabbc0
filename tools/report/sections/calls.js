// ---- What single calls cost: a line with a small histogram for each row that has it ----

const barWidth = 6, barsHeight = 24; // pixels

/** The calls by their cost, on a logarithmic axis; the height is that of a logarithm too, so that one call shows. */
function histogramOf(calls) {
  const tallest = Math.log1p(Math.max(...calls.histogram));
  const from = Math.max(calls.least, 1);
  const ratio = Math.max(calls.most / from, 1) ** (1 / calls.histogram.length);
  const bars = calls.histogram.map((count, i) => {
    const height = count ? Math.max(1, Math.round(barsHeight * Math.log1p(count) / tallest)) : 0;
    const range = `${(from * ratio ** i).toPrecision(3)} to ${(from * ratio ** (i + 1)).toPrecision(3)} clocks: ${count} calls`;
    return `<rect x="${i * barWidth}" y="${barsHeight - height}" width="${barWidth - 1}" height="${height}"><title>${range}</title></rect>`;
  });
  const holder = make('span');
  const width = calls.histogram.length * barWidth;
  holder.innerHTML = `<svg role="img" aria-label="Histogram of ${calls.count} calls" width="${width}" height="${barsHeight}" ` +
    `viewBox="0 0 ${width} ${barsHeight}" fill="currentColor">${bars.join('')}</svg>`;
  return holder.firstChild;
}

const callColumns = [
  {title: 'median', of: ({calls}) => calls && calls.median},
  {title: '99 %', of: ({calls}) => calls && calls.percent99},
  {title: '99.9 %', of: ({calls}) => calls && calls.permille999},
  {title: 'most', of: ({calls}) => calls && calls.most},
  {title: 'interrupted', of: ({calls}) => calls && calls.interrupted},
  {title: 'first', of: row => row.first},
];

function callLine(row) {
  const {calls} = row;
  const interrupted = calls && calls.interrupted
    ? `of ${calls.count} calls, up to ${calls.longestInterrupted} clocks; ${calls.apart ? 'not in the figures' : 'among the figures, being most'}`
    : undefined;
  return make('tr', {'data-function': row.function},
    make('td', {}, functionLink(row.function)),
    ...(manyRuns ? [make('td', {}, data.runs[row.run].label)] : []),
    make('td', {}, combinationOf(row)),
    make('td', {class: 'histogram'}, calls && calls.histogram.length ? histogramOf(calls) : ''),
    ...callColumns.map(column => make('td', {class: 'number', title: column.title === 'interrupted' ? interrupted : undefined},
      column.title === 'interrupted' ? column.of(row) ?? '' : digits(column.of(row)))));
}

function showCalls() {
  const rows = data.rows.filter(row => row.calls || row.first !== undefined);
  if (!rows.length) return;
  const shownColumns = ['Function', ...(manyRuns ? ['Run'] : []), 'Parameters', 'calls'];
  byId('sections').append(make('section', {id: 'calls', 'aria-label': 'What single calls cost'}, make('h2', {}, 'Single calls'),
    make('p', {class: 'hint'}, 'Clocks of one call: the calls by their cost from the least to the most (both axes logarithmic), ' +
      'what half, 99 % and 99.9 % of them do not exceed, and first, a call with nothing in the caches.'),
    make('div', {class: 'scroll'}, make('table', {},
      make('thead', {}, make('tr', {}, ...shownColumns.map(title => make('th', {}, title)),
        ...callColumns.map(({title}) => make('th', {class: 'number'}, title)))),
      make('tbody', {}, ...rows.map(callLine))))));
}
