// ---- History: each function over the builds, with the steps that were found ----

const percentOf = ratio => {
  const percent = (ratio - 1) * 100;
  return `${percent < 0 ? '\u2212' : '+'}${Math.abs(percent).toFixed(Math.abs(percent) < 10 ? 1 : 0)} %`;
};
const stepKind = ratio => ratio > 1 ? 'slower' : 'faster';

/** Marks for an axis of ratios: 1 and a round percentage at either end. */
function marksOf(low, high) {
  const most = Math.max(high - 1, 1 - low);
  const size = 10 ** Math.floor(Math.log10(most));
  const step = [5, 2, 1].map(factor => factor * size).find(each => each <= most);
  return [1 - step, 1, 1 + step].filter(mark => mark >= low && mark <= high);
}

/** Points are builds, lines levels; a step has its size. Values far off stand at the edge. */
function drawHistory(series, builds) {
  const [width, height, left, right, ends] = [300, 112, 52, 8, 16];
  const values = series.values.filter(value => value !== null);
  const sorted = [...values].sort((a, b) => a - b);
  const at = share => sorted[Math.round(share * (sorted.length - 1))];
  const low = Math.min(0.98, at(0.02) - 0.01, ...series.levels.map(level => level.ratio - 0.01));
  const high = Math.max(1.02, at(0.98) + 0.01, ...series.levels.map(level => level.ratio + 0.01));
  const x = build => left + (builds.length > 1 ? build / (builds.length - 1) : 0.5) * (width - left - right);
  const y = ratio => ends + (high - Math.min(high, Math.max(low, ratio))) / (high - low) * (height - 2 * ends);
  const parts = marksOf(low, high).map(mark =>
    `<line x1="${left}" x2="${width - right}" y1="${y(mark)}" y2="${y(mark)}" class="mark"/>` +
    `<text x="${left - 5}" y="${y(mark) + 4}" text-anchor="end">${mark === 1 ? '1' : percentOf(mark)}</text>`);
  series.values.forEach((value, build) => {
    if (value === null) return;
    parts.push(`<circle cx="${x(build)}" cy="${y(value)}" r="2"><title></title></circle>`);
  });
  series.levels.forEach((level, i) => {
    const next = series.levels[i + 1];
    const end = next ? next.from - 1 : builds.length - 1;
    parts.push(`<line x1="${x(level.from) - 2}" x2="${x(end) + 2}" y1="${y(level.ratio)}" y2="${y(level.ratio)}" class="level"/>`);
    if (!next) return;
    const ratio = next.ratio / level.ratio;
    const middle = Math.min(width - 24, Math.max(left + 24, (x(end) + x(next.from)) / 2));
    parts.push(`<line x1="${(x(end) + x(next.from)) / 2}" x2="${(x(end) + x(next.from)) / 2}" y1="${ends}" y2="${height - ends}" class="${stepKind(ratio)}"/>`,
      `<text x="${middle}" y="${i % 2 ? height - 2 : 12}" text-anchor="middle" class="${stepKind(ratio)}">${percentOf(ratio)}</text>`);
  });
  const holder = make('div', {class: 'history'});
  holder.innerHTML = `<svg viewBox="0 0 ${width} ${height}" role="img" aria-label="Clocks over ${builds.length} builds">${parts.join('')}</svg>`;
  const named = series.values.map((value, build) => ({value, build})).filter(each => each.value !== null);
  holder.querySelectorAll('title').forEach((title, i) => {
    title.textContent = `${builds[named[i].build]}: ${percentOf(named[i].value)}`;
  });
  return holder;
}

const historyName = series => views.has(series.function) ? functionLink(series.function) : make('span', {}, series.function);

function historyCard(series, builds) {
  return make('div', {class: 'card', id: 'history-' + encodeURIComponent([series.function, series.parameters].filter(Boolean).join(' ')),
    'data-function': series.function}, make('h3', {}, historyName(series)),
    ...(series.parameters ? [make('div', {class: 'hint'}, series.parameters)] : []), drawHistory(series, builds));
}

function historySteps(steps) {
  const titles = ['Function', 'Build before', 'Build after', 'Size'];
  return make('div', {class: 'scroll'}, make('table', {id: 'steps'},
    make('thead', {}, make('tr', {}, ...titles.map((title, i) => make('th', {class: i === 3 ? 'number' : ''}, title)))),
    make('tbody', {}, ...steps.map(step => {
      const name = [step.function, step.parameters].filter(Boolean).join(' ');
      return make('tr', {'data-function': step.function},
        make('td', {}, make('a', {href: '#history-' + encodeURIComponent(name)}, name)), make('td', {}, step.before),
        make('td', {}, step.after), make('td', {class: 'number', style: shade(step.ratio)}, percentOf(step.ratio)));
    }))));
}

addSection({
  name: 'history', title: 'History',
  show(element, history) {
    const {builds, series, steps} = history;
    const stepped = new Set(steps.map(step => step.function + '\n' + step.parameters));
    const has = each => stepped.has(each.function + '\n' + (each.parameters || ''));
    const cards = list => make('div', {class: 'grid'}, ...list.map(each => historyCard(each, builds)));
    const rest = series.filter(each => !has(each));
    element.append(make('p', {class: 'hint'},
      `${builds.length} builds, from ${builds[0]} to ${builds[builds.length - 1]}. Clocks relative to the first level; points are builds, `,
      'lines the levels between steps. Above 1 is slower.'),
      ...history.notes.map(note => make('p', {class: 'hint'}, note)),
      steps.length ? historySteps(steps) : make('p', {}, 'No steps.'));
    if (steps.length) element.append(cards(series.filter(has)));
    const held = make('details', {}, make('summary', {}, `${rest.length} without a step`));
    const open = () => {
      if (held.open && !held.querySelector('.grid')) held.append(cards(rest));
    };
    held.addEventListener('toggle', open);
    window.addEventListener('beforeprint', () => {
      if (rest.length <= 200) {
        held.open = true;
        open();
      }
    });
    if (rest.length <= 200 && !steps.length) held.open = true;
    if (rest.length) element.append(held);
    open();
  },
});
