// ---- All rows: a table of which only the lines in view are there ----

const numeric = {number: true};
const columns = [
  {title: 'Function', of: row => row.function},
  ...(manyRuns ? [{title: 'Run', of: row => data.runs[row.run].label}] : []),
  {title: 'Parameters', of: combinationOf},
  {title: 'Clocks', ...numeric, of: row => row.clocks},
  {title: 'per', of: row => row.per},
  {title: 'Time (usec)', ...numeric, of: row => row.microseconds},
  ...(data.rows.some(row => row.mflops !== undefined) ? [{title: 'MFlops', ...numeric, of: row => row.mflops}] : []),
  ...(data.rows.some(row => row.result) ? [{title: 'Result', of: row => row.result}] : []),
  {title: 'Comment', of: row => row.comment},
];

const lineHeight = 26, cellPadding = 20, frameShare = 0.78; // pixels, and of the window's height, as the style sheet has it
const widest = {Parameters: 300, Comment: 230}; // pixels of a text; of others 360
const frame = byId('rows');
const tableBody = frame.querySelector('tbody');
let order = data.rows;  // as sorted
let shown = data.rows;  // and filtered
let target = null;      // the row that the address names

/** Text that the filter looks at, put together when it is first asked for. */
function textOf(row) {
  row.text ??= columns.map(column => column.of(row) ?? '').join(' ').toLowerCase();
  return row.text;
}

function cellOf(row, column) {
  const value = column.of(row);
  const cell = make('td', {class: column.number ? 'number' : column.title === 'Result' ? 'result' : ''},
    column.number ? digits(value) : value ?? '');
  if (column.title === 'Clocks' && row.short) cell.prepend(make('span', {class: 'badge warned'}, '< 300'), ' ');
  if (column.title !== 'Function' || printing) return cell; // thousands of links make a printed page slow
  cell.replaceChildren(make('a', {href: '#row=' + encodeURIComponent(keyOf(row)), title: 'link to this row'}, '#'), ' ',
    make('a', {href: '#' + anchorOf(row.function)}, row.function));
  return cell;
}

const lineOf = row => make('tr', {class: [gradeOf(row.result), row === target ? 'target' : ''].join(' ').trim() || undefined,
  'data-function': row.function}, ...columns.map(column => cellOf(row, column)));

const gap = lines => make('tr', {class: 'gap', 'aria-hidden': 'true', style: `height: ${lines * lineHeight}px`});

let laid = {lines: [], first: 0, last: 0}; // what the table has

/** The lines in view and some around them. Those that are there already stay: a frame pays for the new ones alone. */
function showLines(anew = false) {
  const visible = Math.ceil(innerHeight * frameShare / lineHeight); // the frame grows with its lines
  const first = Math.max(0, Math.min(Math.floor(frame.scrollTop / lineHeight) - 10, shown.length - visible));
  const last = Math.min(shown.length, first + visible + 20);
  const linesOf = (from, to) => shown.slice(from, Math.max(from, to)).map(lineOf);
  if (anew || laid.lines !== shown || last <= laid.first || first >= laid.last) {
    tableBody.replaceChildren(gap(first), ...linesOf(first, last), gap(shown.length - last));
  } else if (first !== laid.first || last !== laid.last) {
    for (let i = laid.first; i < first; ++i) tableBody.children[1].remove();
    for (let i = last; i < laid.last; ++i) tableBody.lastChild.previousSibling.remove();
    tableBody.firstChild.replaceWith(gap(first), ...linesOf(first, laid.first));
    tableBody.lastChild.replaceWith(...linesOf(laid.last, last), gap(shown.length - last));
  }
  laid = {lines: shown, first, last};
}

// A text that its column cuts is shown whole under the pointer.
tableBody.addEventListener('mouseover', event => {
  const cell = event.target.closest('td');
  if (cell && cell.scrollWidth > cell.clientWidth) cell.title = cell.textContent;
});

/** All lines at once, for paper. */
const linesOnPaper = 3000;
function showAllLines() {
  tableBody.replaceChildren(...shown.slice(0, linesOnPaper).map(lineOf));
  if (shown.length > linesOnPaper) {
    tableBody.append(make('tr', {}, make('td', {colspan: columns.length},
      `and ${shown.length - linesOnPaper} more rows: filter before printing`)));
  }
}

/** Columns as wide as their longest text, within limits: lines come and go, widths stay. */
function showTitles() {
  const step = Math.max(1, Math.floor(data.rows.length / 2000));
  const pen = make('canvas').getContext('2d');
  const style = getComputedStyle(frame.querySelector('table'));
  // On a narrow screen a long name leaves room for what tells its rows apart.
  const widestOf = column => Math.min(widest[column.title] ?? 360, column === columns[0] && innerWidth < 640 ? innerWidth * 0.4 : Infinity);
  const widthOf = text => pen.measureText(text).width;
  pen.font = `600 ${style.fontSize} ${style.fontFamily}`;
  const widths = columns.map(column => {
    const texts = new Set();
    for (let i = 0; i < data.rows.length; i += step) {
      const value = column.of(data.rows[i]);
      texts.add((column.title === 'Function' ? '# ' : '') + (column.number ? digits(value) : value ?? ''));
    }
    const longest = Math.max(...[...texts].map(text => text.length));
    const wide = [...texts].filter(text => text.length >= 0.8 * longest).slice(0, 200).map(widthOf);
    const mark = column.title === 'Clocks' && data.rows.some(row => row.short) ? 64 : 0;
    return Math.ceil(Math.max(widthOf(column.title + ' \u25b2'), mark + Math.min(widestOf(column), Math.max(...wide)))) + cellPadding;
  });
  frame.querySelector('colgroup').replaceChildren(...widths.map(width => make('col', {style: `width: ${width}px`})));
  frame.querySelector('table').style.minWidth = widths.reduce((sum, width) => sum + width, 0) + 'px';
  frame.querySelector('thead').replaceChildren(make('tr', {}, ...columns.map(column => {
    const button = make('button', {type: 'button'}, column.title);
    const title = make('th', {class: column.number ? 'number' : ''}, button);
    button.addEventListener('click', () => sortBy(column, title));
    return title;
  })));
}

const collator = new Intl.Collator('en', {numeric: true});

function sortBy(column, title) {
  const sign = title.getAttribute('aria-sort') === 'ascending' ? -1 : 1;
  for (const other of title.parentElement.cells) other.removeAttribute('aria-sort');
  title.setAttribute('aria-sort', sign < 0 ? 'descending' : 'ascending');
  const compare = column.number ? (a, b) => a - b : collator.compare;
  const keyed = data.rows.map(row => ({row, key: column.of(row)}));
  const missing = entry => entry.key === undefined || entry.key === '';
  keyed.sort((a, b) => missing(a) || missing(b) ? missing(a) - missing(b) : sign * compare(a.key, b.key));
  order = keyed.map(entry => entry.row);
  applyFilter();
  frame.scrollTop = 0;
}

// ---- Filter ----

const filter = byId('filter');
const grade = byId('grade');

/** Runs what changes the page's length, and keeps the section that is looked at, or the next that is left, in place. */
function keepPlace(change) {
  const sections = [...document.querySelectorAll('main > section, .family')].filter(section => section.offsetHeight > 0);
  const line = Math.min(innerHeight / 4, byId('filters').getBoundingClientRect().bottom + 1);
  const tops = sections.map(section => section.getBoundingClientRect().top);
  const looked = tops.findLastIndex(top => top <= line);
  const scrolled = scrollY > 0;
  change();
  const main = document.querySelector('main');
  main.style.paddingBottom = '';
  const at = sections.findIndex((section, i) => i >= looked && !section.hidden);
  if (!scrolled || looked < 0 || at < 0) return;
  const short = tops[at] + sections[at].offsetHeight < line + 40; // shown from its beginning, then
  const place = short || tops[at] > innerHeight ? line : tops[at];
  const move = () => {
    scrollBy({top: sections[at].getBoundingClientRect().top - place, behavior: 'instant'});
    return sections[at].getBoundingClientRect().top - place;
  };
  const left = move();
  if (left > 1) { // the page has become too short
    main.style.paddingBottom = `${left + Math.max(0, innerHeight - document.body.offsetHeight)}px`;
    move();
  }
}

function applyFilter() {
  const words = filter.value.toLowerCase().split(/\s+/).filter(Boolean);
  const graded = {'': () => true, hot: row => views.get(row.function).hot, bad: row => gradeOf(row.result) !== ''}[grade.value];
  shown = words.length || grade.value
    ? order.filter(row => graded(row) && words.every(word => textOf(row).includes(word))) : order;
  const names = new Set(shown.map(row => row.function));
  keepPlace(() => {
    for (const element of document.querySelectorAll('#overview [data-function], #sections [data-function], article')) {
      element.hidden = !names.has(element.dataset.function);
    }
    for (const [domain, list] of domains) {
      const any = list.some(view => names.has(view.name));
      document.querySelectorAll(`[data-domain="${CSS.escape(domain)}"]`).forEach(element => { element.hidden = !any; });
    }
    byId('shown').value = `${shown.length} of ${data.rows.length} rows`;
    showLines(true);
  });
  remember();
}

// ---- The address: what is filtered, and the row that a link names ----

function remember() {
  const address = new URL(location);
  for (const [name, value] of [['q', filter.value], ['show', grade.value]]) {
    if (value) address.searchParams.set(name, value); else address.searchParams.delete(name);
  }
  if (address.href !== location.href) history.replaceState(null, '', address);
}

function recall() {
  const {searchParams} = new URL(location);
  filter.value = searchParams.get('q') || '';
  if ([...grade.options].some(option => option.value === searchParams.get('show'))) grade.value = searchParams.get('show');
}

/** Goes to the row that the address names; a filter that hides it is taken back. */
function goToRow() {
  const [, key] = location.hash.split('#row=');
  if (key === undefined) return;
  const wanted = decodeURIComponent(key);
  target = data.rows.find(row => keyOf(row) === wanted) || null;
  if (!target) return;
  if (!shown.includes(target)) {
    filter.value = grade.value = '';
    applyFilter();
  }
  frame.scrollTop = shown.indexOf(target) * lineHeight - frame.clientHeight / 2;
  showLines(true);
  frame.scrollIntoView({block: 'center'});
}
