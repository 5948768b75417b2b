// list.js: the list of interfaces with its filter: what isn't up stands first.

const list = { rows: [], input: null, count: null, body: null };

/** The interfaces, those that aren't up first, else as they were brought up. */
function sorted() {
  const rank = { failed: 0, stopped: 1, kept: 2, down: 3, up: 4 };
  return DATA.interfaces.map((one, index) => ({ one, index }))
    .sort((a, b) => rank[a.one.state] - rank[b.one.state] || a.index - b.index)
    .map((entry) => entry.one);
}

function listRow(one) {
  const link = el('a', { href: hashOf(one.name), class: 'name' }, one.name);
  const row = el('tr', { class: `row row-${one.state}` },
    el('th', { scope: 'row' }, link,
      el('span', { class: 'kind' }, one.kind, one.vrf_name === undefined || one.vrf_name === 'default' ? '' : ` · ${one.vrf_name}`)),
    el('td', { class: 'number' }, one.iif === null ? '–' : one.iif),
    el('td', { class: 'number' }, one.vlan === undefined ? '–' : one.vlan),
    el('td', {}, stateBadge(one.state)));
  row.addEventListener('click', (event) => {
    if (event.target !== link) window.location.hash = hashOf(one.name);
  });
  return { one, row, link };
}

/** Shows what passes the filter, and how much that is. */
function applyFilter() {
  const text = list.input.value;
  let shown = 0;
  for (const entry of list.rows) {
    const pass = passes(entry.one, text);
    entry.row.hidden = !pass;
    shown += pass ? 1 : 0;
  }
  const strange = unknownKeys(text);
  list.count.textContent = (text.trim() === ''
    ? counted(list.rows.length, 'interface')
    : `${number(shown)} of ${counted(list.rows.length, 'interface')}`)
    + (strange.length === 0 ? '' : `; no property is named ${cut(strange.join(', '), 60)}: the word is looked for as it is`);
  byId('nothing').hidden = shown !== 0;
  for (const chip of document.querySelectorAll('.chip')) {
    chip.setAttribute('aria-pressed', String(words().includes(chip.dataset.word)));
  }
}

function words() {
  return list.input.value.split(/\s+/).filter((word) => word !== '');
}

/** Adds a word to the filter, or takes it out. */
function toggleWord(word) {
  const now = words();
  const rest = now.filter((known) => known !== word);
  list.input.value = (rest.length === now.length ? [...rest, word] : rest).join(' ');
  applyFilter();
}

/** The buttons below the filter: each kind and each state that there is, with its number. */
function chips() {
  const counts = new Map();
  for (const property of ['kind', 'state']) {
    for (const one of DATA.interfaces) {
      const word = `${property}:${one[property]}`;
      counts.set(word, (counts.get(word) || 0) + 1);
    }
  }
  const wanted = [...counts].filter(([word, count]) => !(word === 'state:up' && count === DATA.interfaces.length));
  return wanted.map(([word, count]) => el('button', {
    type: 'button', class: 'chip', 'data-word': word, 'aria-pressed': 'false',
    click: () => toggleWord(word),
  }, word.slice(word.indexOf(':') + 1), el('span', { class: 'chip-count' }, number(count))));
}

/** Moves the focus between the rows that are shown. */
function moveFocus(step) {
  const shown = list.rows.filter((entry) => !entry.row.hidden);
  if (shown.length === 0) return;
  const at = shown.findIndex((entry) => entry.link === document.activeElement);
  const next = step === 'first' ? 0 : step === 'last' ? shown.length - 1
    : Math.min(Math.max(at + step, 0), shown.length - 1);
  if (at === 0 && step === -1) list.input.focus();
  else shown[next].link.focus();
}

const MOVES = { ArrowDown: 1, ArrowUp: -1, Home: 'first', End: 'last', PageDown: 10, PageUp: -10 };

function onListKey(event) {
  const inFilter = event.target === list.input;
  const isRow = event.target.classList.contains('name');
  if (event.ctrlKey || event.altKey || event.metaKey) return;
  if (inFilter && event.key === 'ArrowDown') {
    event.preventDefault();
    moveFocus('first');
  } else if (inFilter && event.key === 'Enter') {
    const first = list.rows.find((entry) => !entry.row.hidden);
    if (first) window.location.hash = hashOf(first.one.name);
  } else if (isRow && Object.hasOwn(MOVES, event.key)) {
    event.preventDefault();
    moveFocus(MOVES[event.key]);
  }
}

/** Marks the row of the interface that is open. */
function markOpen(name) {
  for (const entry of list.rows) {
    if (entry.one.name === name) entry.link.setAttribute('aria-current', 'true');
    else entry.link.removeAttribute('aria-current');
    entry.row.classList.toggle('open', entry.one.name === name);
  }
}

function buildList() {
  list.input = el('input', {
    id: 'filter', type: 'search', autocomplete: 'off', spellcheck: 'false',
    placeholder: 'kind:svi vrf:2 failed', 'aria-describedby': 'filter-help', input: applyFilter,
  });
  list.count = el('p', { class: 'count', 'aria-live': 'polite', id: 'count' });
  list.rows = sorted().map(listRow);
  const heads = ['Interface', 'IIF', 'VLAN', 'State'];
  fill(byId('list'), { keydown: onListKey }, [
    el('h2', { id: 'list-title' }, 'Interfaces'),
    el('div', { class: 'filter' },
      el('label', { for: 'filter' }, 'Filter'),
      list.input, el('kbd', { 'aria-hidden': 'true' }, '/')),
    el('p', { class: 'help', id: 'filter-help' },
      'Words that all must fit: a name, ', el('code', {}, 'vlan:100'), ', ',
      el('code', {}, 'port:Ethernet4'), ', ', el('code', {}, '-up')),
    el('div', { class: 'chips', role: 'group', 'aria-label': 'Kinds and states' }, chips()),
    list.count,
    el('div', { class: 'list-box' },
      el('table', { class: 'list-table' },
        el('thead', {}, el('tr', {}, heads.map((head, index) =>
          el('th', { scope: 'col', class: index === 1 || index === 2 ? 'number' : null }, head)))),
        el('tbody', {}, list.rows.map((entry) => entry.row))),
      el('p', { id: 'nothing', class: 'empty', hidden: true }, list.rows.length === 0 ? 'There is no routed interface.' : 'No interface fits these words.')),
  ]);
  applyFilter();
}
