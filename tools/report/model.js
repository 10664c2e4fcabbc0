// ---- The data, and what of it is shown ----

const data = JSON.parse(document.getElementById('data').textContent);
const manyRuns = data.runs.length > 1;
const views = new Map(data.functions.map(view => [view.name, {...view, rows: []}]));
data.rows.forEach(row => views.get(row.function).rows.push(row));

const byId = id => document.getElementById(id);

/** An element with attributes and children; text is never read as HTML. */
function make(tag, attributes = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (value !== undefined && value !== false) element.setAttribute(name, value);
  }
  element.append(...children.filter(child => child !== undefined));
  return element;
}

/** A figure with three digits at least, as the table has it. */
const digits = number => number === undefined ? '' : number >= 100 || number === 0 || number < 1e-4
  ? String(number) : number.toPrecision(Math.max(3, String(number).replace(/^0\.0*|\./g, '').length));

const gradeOf = result => !result || result === 'OK' ? '' : result.endsWith('FAIL') ? 'failed' : 'warned';

const parametersOf = row => Object.entries(row.parameters).map(([name, value]) => `${name}=${value}`).join(' ');

const geometricMean = numbers => Math.exp(numbers.reduce((sum, x) => sum + Math.log(x), 0) / numbers.length);

/** What tells a row from the others of its run, whatever the order of the table. */
const combinationOf = row => [parametersOf(row), row.cache].filter(Boolean).join(' ');
const keyOf = row => [row.function, combinationOf(row), data.runs[row.run].label].join(' / ');

/** A function's place on the page: its chart, or its line of the overview. */
const anchorOf = name => 'fn-' + encodeURIComponent(name);

/** A link to it; a long name breaks behind an underscore. */
const functionLink = name => make('a', {href: '#' + anchorOf(name)},
  ...name.split(/(?<=_)/).flatMap(part => [part, make('wbr')]));

/** Results of each function's tests that were not good, over all runs. */
const badResults = new Map();
for (const test of data.runs.flatMap(run => run.tests)) {
  if (!gradeOf(test.result)) continue;
  if (!badResults.has(test.function)) badResults.set(test.function, new Set());
  badResults.get(test.function).add(test.result);
}

/** A warning that all functions share tells of the machine: it is said once, and not beside every name. */
const isShared = result => views.size >= 3 && gradeOf(result) === 'warned' &&
  [...views.keys()].every(name => badResults.get(name)?.has(result));

function badges(view) {
  const list = [...badResults.get(view.name) || []].filter(result => !isShared(result))
    .map(result => make('span', {class: 'badge ' + gradeOf(result), title: result}, gradeOf(result) === 'failed' ? result : '!'));
  if (view.hot) list.unshift(make('span', {class: 'badge hot'}, 'Hot'));
  return list;
}

// ---- Theme ----

const root = document.documentElement;
const prefersDark = window.matchMedia('(prefers-color-scheme: dark)');
let printing = false;
const isDark = () => !printing && (root.dataset.theme ? root.dataset.theme === 'dark' : prefersDark.matches);
const property = name => getComputedStyle(root).getPropertyValue(name).trim();

// Okabe and Ito's colours, told apart with any colour vision; darkened or lightened to show on the ground.
const palette = {
  light: ['#0072b2', '#d55e00', '#009e73', '#b5468c', '#8a6d00', '#3a9bd0', '#444444', '#7a4bc2'],
  dark: ['#56b4e9', '#ff8c42', '#2ed3a2', '#e79bc9', '#f0d64a', '#9ad1ff', '#d0d0d0', '#b79cf5'],
};
const colourOf = i => palette[isDark() ? 'dark' : 'light'][i % palette.light.length];
