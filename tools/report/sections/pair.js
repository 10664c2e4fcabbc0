// ---- Results of benchex-compare --pair: what became slower, and whether it is still right ----

addSection({name: 'pair', title: 'Two sides against each other', show: (element, results) => {
  const kinds = {
    'all rows': () => true,
    'slower': row => row.verdict === 'slower',
    'faster': row => row.verdict === 'faster',
    'cannot tell': row => isTimed(row) && row.verdict === 'cannot tell',
    'same': row => row.verdict === 'same',
    'wrong': row => row.outputs === 'wrong' || row.outputs === 'data differ',
    'not equal bit by bit': row => row.outputs !== 'equal',
    'in trouble': row => row.trouble,
  };
  const isTimed = row => row.rounds > 0;
  const isKnown = row => row.low > 0 && row.high > 0;
  const ratioText = ratio => ratio > 0 ? ratio.toFixed(ratio < 10 ? 4 : 1) : '';
  const percentText = share => `${+(100 * share).toPrecision(3)} %`;
  const clocksText = clocks => clocks > 0 ? String(+clocks.toPrecision(4)) : '';
  const intervalText = row => isKnown(row) ? `${ratioText(row.low)} to ${ratioText(row.high)}` : '';
  const classOf = row => !isTimed(row) ? undefined : row.verdict === 'cannot tell' ? 'unclear' : row.verdict;
  const outputsText = row => [row.outputs, row.ulps > 0 ? `${+row.ulps.toPrecision(3)} ulp` : '',
    typeof row.decibels === 'number' ? `${row.decibels.toFixed(0)} dB` : ''].filter(Boolean).join(', ');
  const numberCell = text => make('td', {class: 'number'}, text);
  const tableOf = (titles, body) => make('div', {class: 'scroll', tabindex: 0}, make('table', {},
    make('thead', {}, make('tr', {}, ...titles)), body));

  /** How far the pictures reach: as nine in ten of the ratios, twice the threshold at least. */
  function reachOf(result) {
    const ends = result.rows.filter(isTimed).map(row => Math.abs(Math.log(row.ratio))).sort((a, b) => a - b);
    return Math.max(2 * Math.log1p(result.threshold), 1.2 * (ends[Math.floor(0.9 * ends.length)] || 0));
  }

  function intervalPicture(row, {reach, threshold}) {
    if (!isTimed(row)) return '';
    const at = log => 100 + 98 * Math.max(-1, Math.min(1, log / reach));
    const limit = Math.log1p(threshold);
    const low = isKnown(row) ? at(Math.log(row.low)) : 0, high = isKnown(row) ? at(Math.log(row.high)) : 200;
    const holder = make('span');
    holder.innerHTML = `<svg role="img" aria-label="${intervalText(row)}" viewBox="0 0 200 16" preserveAspectRatio="none">` +
      `<title>${ratioText(row.ratio)} (${intervalText(row) || 'unknown'})</title>` +
      `<rect class="same" x="${at(-limit)}" width="${at(limit) - at(-limit)}" height="16"/>` +
      '<line class="one" x1="100" x2="100" y2="16"/>' +
      `<line class="range" x1="${low}" x2="${Math.max(high, low + 1)}" y1="8" y2="8"/>` +
      `<rect class="centre" x="${at(Math.log(row.ratio)) - 2}" y="3" width="4" height="10"/></svg>`;
    return holder.firstChild;
  }

  const remarkOf = row => [row.trouble, row.difference].filter(Boolean).join('; ');

  const columnsOf = result => [
    {title: 'Function', of: row => row.function, class: () => 'name'},
    {title: 'Parameters', of: row => row.parameters, class: () => 'parameters'},
    ...(result.outputsOnly ? [] : [
      {title: 'Verdict', of: row => isTimed(row) ? row.verdict : '', class: () => 'verdict'}]),
    {title: 'Outputs', of: outputsText, class: row => ({right: 'differs', equal: ''})[row.outputs] ?? 'wrong'},
    ...(result.outputsOnly ? [] : [
      {title: 'Ratio', number: true, of: row => row.ratio, text: row => ratioText(row.ratio)},
      {title: '95 % interval', number: true, of: row => isKnown(row) ? row.high / row.low : undefined, text: intervalText},
      {title: ((reach) => `1/${reach} to ${reach}`)(+Math.exp(result.reach).toPrecision(3)), of: row => row.ratio, number: true,
        text: row => intervalPicture(row, result), class: () => ''},
      {title: 'Clocks before', number: true, of: row => row.clocksBefore, text: row => clocksText(row.clocksBefore)},
      {title: 'after', number: true, of: row => row.clocksAfter, text: row => clocksText(row.clocksAfter)},
      {title: 'Rounds', number: true, of: row => row.rounds, text: row => String(row.rounds)}]),
    ...(result.rows.some(remarkOf) ? [{title: 'Remark', of: remarkOf, class: () => 'remark'}] : []),
  ];

  const lineOf = (row, columns) => make('tr', {class: classOf(row)}, ...columns.map(column =>
    make('td', {class: column.class ? column.class(row) : column.number ? 'number' : undefined}, (column.text || column.of)(row))));

  function sortLines(lines, column, title) {
    const sign = title.getAttribute('aria-sort') === 'descending' ? 1 : -1;
    for (const other of title.parentElement.cells) other.removeAttribute('aria-sort');
    title.setAttribute('aria-sort', sign < 0 ? 'descending' : 'ascending');
    const missing = key => key === undefined || key === null || key === '';
    const order = ([, a], [, b]) => missing(a) || missing(b) ? missing(a) - missing(b)
      : sign * (column.number ? a - b : collator.compare(a, b));
    const sorted = lines.map(line => [line, column.of(line.row)]).sort(order).map(([line]) => line.element);
    sorted[0]?.parentElement.replaceChildren(...sorted);
  }

  function showHead(result, part) {
    const list = make('dl');
    for (const [label, text] of [['Before', result.before], ['After', result.after],
      ['Rounds', result.outputsOnly ? 'none: outputs only' : `${result.rounds} in ${result.seconds.toFixed(1)} s`],
      ['Same', `within ${percentText(result.threshold)}; any false alarm has a chance of ${percentText(result.alpha)}`]]) {
      list.append(make('dt', {}, label), make('dd', {}, text));
    }
    part.append(list, ...result.notes.map(note => make('p', {class: 'notice'}, note)));
  }

  /** A line for each function, those with slower rows first. */
  function showFunctions(result, part) {
    const functions = new Map();
    for (const row of result.rows) functions.set(row.function, [...(functions.get(row.function) || []), row]);
    const lines = [...functions].map(([name, rows]) => {
      const ratios = rows.filter(isTimed).map(row => row.ratio);
      const count = kind => rows.filter(kinds[kind]).length;
      return {name, rows, ratio: ratios.length ? geometricMean(ratios) : 0, slower: count('slower'), faster: count('faster'),
        differs: count('not equal bit by bit')};
    }).sort((a, b) => b.slower - a.slower || b.differs - a.differs || b.ratio - a.ratio);
    part.append(make('h3', {}, 'Functions'), tableOf(['Function', 'Rows', 'Mean ratio', 'Slower', 'Faster', 'Outputs differ']
      .map((title, i) => make('th', {class: i ? 'number' : ''}, title)), make('tbody', {}, ...lines.map(line =>
      make('tr', {class: line.slower ? 'slower' : ''}, make('td', {class: 'verdict'}, line.name),
        numberCell(String(line.rows.length)), numberCell(ratioText(line.ratio)),
        ...[line.slower, line.faster, line.differs].map(count => numberCell(count ? String(count) : '')))))));
  }

  /** The rows, with a button for each kind that there is; the page's filter chooses among them, too. */
  function showRows(result, part) {
    result.reach = reachOf(result);
    const columns = columnsOf(result);
    const lines = result.rows.map(row => {
      const line = lineOf(row, columns);
      return {row, element: line, words: line.textContent.toLowerCase()};
    });
    let kind = 'all rows';
    const buttons = Object.keys(kinds).filter(name => result.rows.some(kinds[name])).map(name => {
      const look = ['slower', 'wrong', 'in trouble'].includes(name) ? 'bad' : name === 'faster' ? 'good' : '';
      const button = make('button', {type: 'button', class: look, 'data-kind': name}, `${result.rows.filter(kinds[name]).length} ${name}`);
      button.addEventListener('click', () => {
        kind = name;
        choose();
      });
      return button;
    });
    const choose = () => {
      const words = filter.value.toLowerCase().split(/\s+/).filter(Boolean);
      for (const line of lines) line.element.hidden = !kinds[kind](line.row) || !words.every(word => line.words.includes(word));
      for (const button of buttons) button.setAttribute('aria-pressed', button.dataset.kind === kind);
    };
    const titles = columns.map(column => {
      const button = make('button', {type: 'button'}, column.title);
      const title = make('th', {class: column.number ? 'number' : ''}, button);
      button.addEventListener('click', () => sortLines(lines, column, title));
      return title;
    });
    const table = tableOf(titles, make('tbody', {}, ...lines.map(line => line.element)));
    table.classList.add('rows');
    part.append(make('h3', {}, 'Rows, worst first'), make('div', {class: 'counts'}, ...buttons), table);
    filter.addEventListener('input', choose);
    window.addEventListener('load', choose); // the address may hold a filter
  }

  function showOneSided(title, rows, part) {
    if (!rows.length) return;
    part.append(make('h3', {}, `${title} (${rows.length})`), tableOf([], make('tbody', {},
      ...rows.map(row => make('tr', {}, make('td', {}, row.function), make('td', {}, row.parameters))))));
  }

  for (const result of results) {
    const part = make('div', {class: 'pair'});
    showHead(result, part);
    showRows(result, part);
    showFunctions(result, part);
    showOneSided('Only before', result.onlyBefore, part);
    showOneSided('Only after', result.onlyAfter, part);
    element.append(part);
  }
}});
