// ---- Runs, problems and the overview ----

const heads = [['Computer', 'computer'], ['CPU', 'cpu'], ['OS', 'os'], ['Library', 'libraries'], ['Start', 'start']];

/** What all runs share is said once; the rest stands in a line for each run. */
function showRuns() {
  const text = (run, member) => [run[member]].flat().join('; ');
  const shared = heads.filter(([, member]) => new Set(data.runs.map(run => text(run, member))).size === 1);
  const own = heads.filter(head => !shared.includes(head));
  const list = make('dl');
  shared.forEach(([label, member]) => list.append(make('dt', {}, label), make('dd', {}, text(data.runs[0], member))));
  const titles = ['Run', ...own.map(([label]) => label), 'Table', 'Results'];
  const table = make('table', {}, make('thead', {}, make('tr', {}, ...titles.map(title => make('th', {}, title)))));
  const counts = data.rows.reduce((all, row) => all.set(row.run, (all.get(row.run) || 0) + 1), new Map());
  const results = run => {
    if (!run.summary) return 'no summary table (-u) beside the table';
    const number = grade => run.tests.filter(test => gradeOf(test.result) === grade).length;
    const parts = [`${number('')} good`, `${number('warned')} warned`, `${number('failed')} failed`];
    return `${run.tests.length} tests: ${parts.filter(part => !part.startsWith('0 ')).join(', ')}; ${run.counts['Total time'] ?? ''}`;
  };
  table.append(make('tbody', {}, ...data.runs.map((run, i) => make('tr', {},
    make('td', {}, make('b', {}, run.label)),
    ...own.map(([, member]) => make('td', {}, text(run, member))),
    make('td', {}, `${run.file}, ${counts.get(i) || 0} rows${run.incomplete ? ', breaks off within a line' : ''}`),
    make('td', {class: 'wrap'}, results(run))))));
  byId('runs').append(list, make('div', {class: 'scroll'}, table));
}

/** The tests that did not end well, each once: a failed one has no row that could be marked. */
function showProblems() {
  const bad = new Map();
  for (const run of data.runs) {
    for (const test of run.tests.filter(each => gradeOf(each.result))) {
      const key = test.function + test.result;
      if (!bad.has(key)) bad.set(key, {...test, runs: []});
      bad.get(key).runs.push(run.label);
    }
  }
  if (!bad.size) return;
  const list = [...bad.values()];
  const failed = list.filter(test => gradeOf(test.result) === 'failed');
  const warned = list.filter(test => !failed.includes(test))
    .reduce((all, test) => all.set(test.result, [...(all.get(test.result) || []), test]), new Map());
  const nameOf = test => views.has(test.function) ? functionLink(test.function) : test.function;
  const inRuns = test => manyRuns && test.runs.length < data.runs.length ? ` (${test.runs.join(', ')})` : '';
  byId('problems').append(make('h2', {}, 'Failed and warned tests'));
  if (failed.length) {
    const titles = ['Function', 'Result', 'Test', 'Source', 'Run'];
    byId('problems').append(make('div', {class: 'scroll'}, make('table', {},
      make('thead', {}, make('tr', {}, ...titles.map(title => make('th', {}, title)))),
      make('tbody', {}, ...failed.map(test => make('tr', {class: 'failed'}, make('td', {}, nameOf(test)),
        make('td', {class: 'result'}, test.result), make('td', {}, test.test), make('td', {}, test.source),
        make('td', {}, test.runs.join(', '))))))));
  }
  for (const [result, tests] of warned) {
    byId('problems').append(make('details', {open: tests.length <= 10},
      make('summary', {}, make('span', {class: 'badge warned'}, result),
        ` ${isShared(result) ? 'all ' : ''}${tests.length} functions`),
      make('p', {class: 'names'}, ...tests.map(test => make('span', {}, nameOf(test), inRuns(test))))));
  }
}

/** Clocks of each combination of a function, one map for each run; equal rows of a run pair up in their order. */
function figuresOf(view) {
  if (view.figures) return view.figures;
  view.figures = data.runs.map(() => new Map());
  for (const row of view.rows) {
    if (!(row.clocks > 0)) continue;
    const figures = view.figures[row.run];
    let key = combinationOf(row);
    while (figures.has(key)) key += '\n';
    figures.set(key, row.clocks);
  }
  return view.figures;
}

/** The geometric mean of a run's ratios to another over the combinations of both; nothing where there is none. */
function ratioOf(view, run, base) {
  const [mine, theirs] = [figuresOf(view)[run], figuresOf(view)[base]];
  const ratios = [...mine].filter(([key]) => theirs.has(key)).map(([key, clocks]) => clocks / theirs.get(key));
  return ratios.length ? geometricMean(ratios) : undefined;
}

/** Blue is faster, orange slower; from half a percent to a factor of four. Readable with any colour vision. */
function shade(ratio) {
  const strength = Math.min(1, Math.abs(Math.log2(ratio)) / 2);
  if (strength < 0.004) return '';
  const [r, g, b] = ratio < 1 ? (isDark() ? [86, 180, 233] : [0, 114, 178]) : (isDark() ? [255, 140, 66] : [213, 94, 0]);
  return `background: rgba(${r}, ${g}, ${b}, ${(0.1 + 0.4 * strength).toFixed(2)})`;
}

const ratioCell = ratio => ratio === undefined ? make('td', {class: 'number'})
  : make('td', {class: 'number', style: shade(ratio), 'data-ratio': ratio}, ratio.toFixed(ratio < 10 ? 2 : 0));

const range = numbers => {
  const [low, high] = [Math.min(...numbers), Math.max(...numbers)].map(digits);
  return low === high ? low : `${low} to ${high}`;
};

let base = 0;

function overviewCells(view) {
  const figures = figuresOf(view);
  const clocks = [...figures[base].values()];
  const units = [...new Set(view.rows.map(row => row.per).filter(Boolean))].join(', ');
  const cells = [make('td', {class: 'number'}, String(Math.max(...figures.map(map => map.size)))),
    make('td', {class: 'number'}, clocks.length ? range(clocks) : ''), make('td', {}, units)];
  return cells.concat(data.runs.map((run, i) => i).filter(i => i !== base).map(i => ratioCell(ratioOf(view, i, base))));
}

/** A line for each function under that of its domain, whose ratios are the geometric means of its functions'. */
function showOverview() {
  const others = data.runs.map((run, i) => i).filter(i => i !== base);
  const titles = ['Function', 'Combinations', manyRuns ? `Clocks, ${data.runs[base].label}` : 'Clocks', 'per'];
  const body = [];
  for (const [domain, list] of domains) {
    const mean = i => {
      const ratios = list.map(view => ratioOf(view, i, base)).filter(Boolean);
      return ratios.length ? geometricMean(ratios) : undefined;
    };
    body.push(make('tr', {class: 'domain', 'data-domain': domain},
      make('th', {scope: 'rowgroup'}, make('a', {href: '#domain-' + domain}, domain), ` (${list.length})`),
      ...titles.slice(1).map(() => make('td')),
      ...others.map(i => ratioCell(mean(i)))));
    for (const view of list) {
      body.push(make('tr', {'data-function': view.name, id: hasChart(view) ? undefined : anchorOf(view.name)},
        make('td', {}, functionLink(view.name), ...badges(view)), ...overviewCells(view)));
    }
  }
  const table = byId('overview').querySelector('table');
  table.className = others.length ? 'several' : '';
  table.replaceChildren(
    make('thead', {}, make('tr', {}, ...titles.map((title, i) => make('th', {class: i === 1 || i === 2 ? 'number' : ''}, title)),
      ...others.map(i => make('th', {class: 'number'}, data.runs[i].label)))),
    make('tbody', {}, ...body));
}

function explainOverview() {
  const meaning = byId('meaning');
  if (!manyRuns) {
    meaning.textContent = 'Clocks per unit, from the least to the most of a function\'s combinations.';
    return;
  }
  const choice = make('select', {id: 'base'}, ...data.runs.map((run, i) => make('option', {value: i}, run.label)));
  choice.addEventListener('change', () => {
    base = Number(choice.value);
    showOverview();
    applyFilter();
  });
  meaning.append('Ratios of clocks to those of ', choice,
    ', geometric means over the combinations that both have. ',
    make('span', {class: 'key', style: shade(0.25)}, 'below 1 is faster'), ' ',
    make('span', {class: 'key', style: shade(4)}, 'above 1 is slower'));
}
