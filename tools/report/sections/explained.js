// ---- What calls execute, and how far that is from what the machine can do (benchex-explain --json) ----

// The name of SVG's elements as the browser has it, so that the page holds no address.
const svgNames = new DOMParser().parseFromString('<svg></svg>', 'text/html').querySelector('svg').namespaceURI;
const svg = (tag, attributes, ...children) => {
  const element = document.createElementNS(svgNames, tag);
  for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
  element.append(...children);
  return element;
};

/** Clocks of a call that its limit does not explain: what tuning may win. */
const clocksLeft = call => call.clocks * (1 - (call.limit === undefined ? 0 : call.bounds[0]?.share ?? 0));
const bytesOfCall = call => Math.max(1, call.loads.bytes + call.stores.bytes);
const shareText = share => `${Math.round(100 * share)} %`;
const limitText = call => call.limit === undefined ? '' :
  call.limit + (call.limitShare >= 0.5 ? ` ${shareText(call.limitShare)}` : '');

/** Instructions for each byte, instructions in a clock, under what the machine reaches of both. */
function rooflineOf(mine) {
  const calls = mine.calls.filter(call => call.instructionsPerClock > 0);
  const [width, height, edge] = [760, 320, 44];
  const intensity = call => call.instructions / bytesOfCall(call);
  const most = mine.rates.instructions ?? Math.max(...calls.map(call => call.instructionsPerClock));
  const bytes = Math.max(0, ...Object.entries(mine.rates).filter(([name]) => /^loads of \d+$/.test(name))
    .map(([name, rate]) => rate * Number(name.slice(9))));
  const xs = calls.map(intensity).concat(bytes > 0 ? [most / bytes] : []);
  const [left, right] = [Math.log(Math.min(...xs) / 2), Math.log(Math.max(...xs) * 2)];
  const [low, high] = [Math.log(Math.min(0.5, ...calls.map(call => call.instructionsPerClock))), Math.log(most * 1.3)];
  const x = value => edge + (Math.log(value) - left) / (right - left) * (width - 2 * edge);
  const y = value => height - edge - (Math.log(value) - low) / (high - low) * (height - 2 * edge);
  const label = (text, at, more) => svg('text', {'font-size': 11, fill: 'var(--faint)', ...at, ...more}, text);
  const picture = svg('svg', {viewBox: `0 0 ${width} ${height}`, role: 'img', style: 'max-width: 60rem; width: 100%',
    'aria-label': 'Instructions in a clock over instructions for each byte loaded or stored'});
  picture.append(svg('rect', {x: edge, y: edge, width: width - 2 * edge, height: height - 2 * edge, fill: 'var(--card)', stroke: 'var(--line)'}));
  const roof = Array.from({length: 60}, (_, i) => Math.exp(left + (right - left) * i / 59))
    .map(value => [value, Math.min(most, bytes > 0 ? value * bytes : most)]).filter(([, rate]) => Math.log(rate) >= low);
  picture.append(svg('polyline', {fill: 'none', stroke: 'var(--accent)', 'stroke-width': 2,
    points: roof.map(([value, rate]) => `${x(value)},${y(rate)}`).join(' ')}));
  for (const call of calls) {
    const point = svg('circle', {cx: x(intensity(call)), cy: y(call.instructionsPerClock), r: 5, 'fill-opacity': 0.7,
      fill: call.limit === 'latency or waiting' ? 'var(--hot)' : 'var(--accent)', 'data-function': call.function});
    point.append(svg('title', {}, `${call.function} ${call.parameters}: ${digits(call.instructionsPerClock)} a clock, ${limitText(call)}`));
    picture.append(point);
  }
  for (const value of [0.25, 0.5, 1, 2, 4, 8].filter(each => Math.log(each) >= low && Math.log(each) <= high))
    picture.append(label(value, {x: edge - 6, y: y(value) + 4, 'text-anchor': 'end'}));
  for (const value of [0.01, 0.1, 1, 10, 100].filter(each => Math.log(each) >= left && Math.log(each) <= right))
    picture.append(label(value, {x: x(value), y: height - edge + 16, 'text-anchor': 'middle'}));
  picture.append(label('instructions for each byte loaded or stored', {x: width / 2, y: height - 8, 'text-anchor': 'middle'}),
    label('instructions in a clock', {x: edge, y: edge - 10}),
    label(`${digits(most)} a clock`, {x: width - edge, y: y(most) - 5, 'text-anchor': 'end'}));
  return picture;
}

function showExplained(element, mine) {
  const titles = ['Function', 'Parameters', 'Instructions', 'Clocks', 'A clock', 'Limit', 'Clocks left', 'Operations'];
  const cell = (text, attributes) => make('td', attributes, text ?? '');
  const rows = [...mine.calls].sort((a, b) => (clocksLeft(b) || 0) - (clocksLeft(a) || 0));
  const figure = number => number > 0 ? Number(number.toPrecision(4)).toLocaleString('en') : '';
  if (mine.calls.some(call => call.instructionsPerClock > 0)) element.append(rooflineOf(mine));
  element.append(make('div', {class: 'scroll'}, make('table', {},
    make('thead', {}, make('tr', {}, ...titles.map(title => make('th', {}, title)))),
    make('tbody', {}, ...rows.map(call => make('tr', {'data-function': call.function},
      cell(views.has(call.function) ? functionLink(call.function) : call.function), cell(call.parameters),
      cell(call.instructions.toLocaleString('en') + (call.complete ? '' : ' at least')), cell(figure(call.clocks)),
      cell(figure(call.instructionsPerClock)), cell(limitText(call)), cell(figure(clocksLeft(call))),
      cell(call.operations ? figure(call.operations) +
        (call.operationsDeclared ? ` for ${figure(call.operationsDeclared)}` : '') : '')))))));
}

/** Kinds and the hottest block of the function's call that has the most instructions. */
function explainedCard(view, mine) {
  const own = mine.calls.filter(call => call.function === view.name);
  if (!own.length) return undefined;
  const call = own.reduce((a, b) => b.instructions > a.instructions ? b : a);
  const kinds = call.mix.slice(0, 8).map(({kind, count}) => `${shareText(count / call.instructions)} ${kind}`).join(', ');
  const block = call.blocks[0];
  return make('details', {}, make('summary', {}, `${call.instructions.toLocaleString('en')} instructions ${limitText(call)}`),
    make('p', {class: 'hint'}, `${call.parameters}: ${kinds}`),
    block && make('pre', {style: 'overflow: auto; max-height: 16rem'},
      `${block.place}, ${block.executions.toLocaleString('en')} times\n` + block.code.map(line => line.text).join('\n')));
}

addSection({
  name: 'explained', title: 'What calls execute',
  hint: 'From benchex-explain --json. A limit is the largest of the lower bounds that the mix of a call sets on this ' +
    'machine; clocks left are those that it does not explain. The line is what the machine reaches: instructions in ' +
    'a clock, and bytes.',
  show: showExplained, ofFunction: explainedCard,
});
