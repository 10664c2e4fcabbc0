// ---- Sections that other data add to the page: report/sections/NAME.js calls addSection ----

const sections = [];

/**
 * Adds a part of the page, which is shown where the data have `data.sections[name]`. All functions are optional.
 * - name, title, hint: of the data's member; the heading; a line of text below it
 * - show(element, mine): fills the part's own section, once
 * - ofFunction(view, mine): an element for the card of a function (view.name, view.rows), or nothing
 * - repaint(mine): the colours have changed; `colourOf(i)`, `property('--faint')` and `isDark()` tell the new ones
 * Elements with an attribute data-function (a function's full name) go and come with the page's filter.
 */
function addSection(section) {
  sections.push(section);
}

const sectionData = section => data.sections?.[section.name];

function showSections() {
  for (const section of sections) {
    const mine = sectionData(section);
    if (mine === undefined || !section.show) continue;
    const element = make('section', {id: 'section-' + section.name, 'aria-label': section.title}, make('h2', {}, section.title),
      section.hint ? make('p', {class: 'hint'}, section.hint) : undefined);
    byId('sections').append(element);
    section.show(element, mine);
  }
}

/** What the sections have for the card of a function. */
const sectionParts = view => sections.filter(section => section.ofFunction && sectionData(section) !== undefined)
  .map(section => section.ofFunction(view, sectionData(section))).filter(Boolean);

const repaintSections = () => sections.filter(section => section.repaint && sectionData(section) !== undefined)
  .forEach(section => section.repaint(sectionData(section)));
