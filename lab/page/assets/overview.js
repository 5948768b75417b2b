// overview.js: the switch as a whole: what needs attention, how full the chip's
// tables are, what was not taken of the configuration.

const NEARLY_FULL = 0.8;
const NAME_SHOWN = 80;

function count(state) {
  return DATA.interfaces.filter((one) => one.state === state).length;
}

function buildTop() {
  const facts = [['Chip', DATA.chip]];
  if (DATA.mac !== '') facts.push(['Router MAC', `${DATA.mac} at station ${DATA.station}`]);
  facts.push([DATA.from_state ? 'State folder' : 'Configuration', DATA.source]);
  fill(byId('top'), {}, [
    el('div', { class: 'title' },
      el('p', { class: 'eyebrow' }, 'Routed interfaces'),
      el('h1', { title: DATA.host }, DATA.host === '' ? 'Switch without a name' : cut(DATA.host, NAME_SHOWN))),
    el('dl', { class: 'facts' }, facts.map(([name, value]) =>
      el('div', {}, el('dt', {}, name), el('dd', {}, value)))),
    themeButton(),
  ]);
  byId('foot').append(`Made by rtif ${DATA.version} report. Everything is in this file; it asks nothing of the network.`);
  document.title = `${DATA.host === '' ? 'Switch' : cut(DATA.host, NAME_SHOWN)}: routed interfaces`;
}

/** One number of the switch. */
function tile(value, name, mark = null) {
  return el('div', { class: mark ? `tile tile-${mark}` : 'tile' },
    el('dt', {}, name), el('dd', {}, value));
}

function tiles() {
  const up = count('up');
  const known = DATA.interfaces.length;
  const all = [known === 0 ? tile('none', 'routed interfaces')
    : tile([number(up), ' ', el('span', { class: 'of' }, `/ ${number(known)}`)], 'interfaces up', up === known ? 'up' : 'failed')];
  if (!DATA.from_state) all.push(tile(number(DATA.calls), 'platform calls'));
  if (!DATA.from_state) all.push(tile(number(DATA.vlans), 'bridged VLANs'));
  all.push(tile(number(DATA.routes), 'routes'));
  if (DATA.virtual_macs.length !== 0) all.push(tile(number(DATA.virtual_macs.length), 'virtual MACs'));
  if (DATA.pairs.length !== 0) all.push(tile(number(DATA.pairs.length), 'private-VLAN pairs'));
  if (DATA.skipped.length !== 0) all.push(tile(number(DATA.skipped.length), 'rows not taken'));
  return el('dl', { class: 'tiles' }, all);
}

/** What isn't as it should be, with links. */
function attention() {
  const bad = DATA.interfaces.filter((one) => one.state !== 'up')
    .map((one) => ({ who: linkTo(one.name), state: one.state, error: one.error || '' }));
  for (const extra of [...DATA.virtual_macs, ...DATA.pairs]) {
    if (extra.error !== '') bad.push({ who: [extra.what, ' of ', linkTo(extra.owner)], state: 'failed', error: extra.error });
  }
  if (bad.length === 0) return null;
  return el('section', { class: 'card attention', 'aria-labelledby': 'attention' },
    el('h2', { id: 'attention' }, `Not up: ${number(bad.length)}`),
    el('ul', { class: 'bad' }, bad.map((one) => el('li', {},
      el('p', { class: 'bad-head' }, stateBadge(one.state), ' ', el('strong', {}, one.who)),
      el('p', { class: 'error' }, one.error)))));
}

/** How full a table is, in words and as a class. */
function fillWord(one) {
  if (one.used >= one.size) return ['full', 'full'];
  return one.used / one.size >= NEARLY_FULL ? ['nearly full', 'nearly'] : ['', ''];
}

function percent(one) {
  const value = 100 * one.used / one.size;
  return one.used === 0 ? '0 %' : value < 1 ? '< 1 %' : `${Math.floor(value)} %`;
}

function bar(one) {
  const [word, mark] = fillWord(one);
  const width = Math.min(100, 100 * one.used / one.size);
  return el('tr', { class: one.used === 0 ? 'unused' : `fill-${mark}`, 'data-table': one.name },
    el('th', { scope: 'row' }, one.label),
    el('td', { class: 'bar-cell' },
      el('div', { class: 'bar', 'aria-hidden': 'true' },
        el('div', { class: 'bar-fill', style: `inline-size:${one.used === 0 ? 0 : Math.max(width, 0.6)}%` }))),
    el('td', { class: 'number' }, `${number(one.used)} / ${number(one.size)}`),
    el('td', { class: 'number share' }, percent(one),
      word === '' ? null : el('span', { class: 'warning' }, '▲ ', word)));
}

function occupancy() {
  return el('section', { class: 'card', 'aria-labelledby': 'tables' },
    el('h2', { id: 'tables' }, 'Tables of the chip, and the library’s numbers'),
    el('table', { class: 'fills' },
      el('thead', {}, el('tr', {},
        el('th', { scope: 'col' }, 'Table'),
        el('td', {}),
        el('th', { scope: 'col', class: 'number' }, 'Used / size'),
        el('th', { scope: 'col', class: 'number' }, 'Share'))),
      el('tbody', {}, DATA.tables.map(bar))));
}

function extras() {
  const rows = (lines) => lines.map((line) => [line.what, line.owner === '' ? '–' : linkTo(line.owner),
    line.where === '' ? '–' : line.where, stateBadge(line.error === '' ? 'up' : 'failed')]);
  const parts = [];
  if (DATA.virtual_macs.length !== 0) {
    parts.push(el('section', { class: 'card' }, el('h2', {}, 'Virtual MACs'),
      table('Virtual MACs', ['MAC', 'Interface', 'In the chip', 'State'], rows(DATA.virtual_macs))));
  }
  if (DATA.pairs.length !== 0) {
    parts.push(el('section', { class: 'card' }, el('h2', {}, 'Private-VLAN pairs'),
      table('Private-VLAN pairs', ['Pair', 'Interface', 'In the chip', 'State'], rows(DATA.pairs))));
  }
  return parts;
}

function remarks() {
  const parts = [];
  if (DATA.skipped.length !== 0) {
    parts.push(el('section', { class: 'card' }, el('h2', {}, 'Rows not taken'),
      table('Rows not taken', ['Table', 'Row', 'Why'],
        DATA.skipped.map((row) => [row.table, row.row, row.reason]))));
  }
  if (DATA.notes.length !== 0) {
    parts.push(el('section', { class: 'card' }, el('h2', {}, 'Notes'),
      el('ul', { class: 'notes' }, DATA.notes.map((note) => el('li', {}, note)))));
  }
  return parts;
}

/** Requests that have called nothing, in one fold. */
function withoutCalls(requests) {
  if (requests.length === 0) return null;
  return el('details', { class: 'request' },
    el('summary', {}, counted(requests.length, 'request'), ' ', el('span', { class: 'quiet' }, 'without a call')),
    el('p', {}, requests.map((request) => request.asked).join(', ')));
}

/** The requests that belong to no interface. */
function switchRequests() {
  if (DATA.switch_requests.length === 0) return null;
  return el('section', { class: 'card' },
    el('h2', {}, 'Requests of the switch itself'),
    DATA.switch_requests.filter((request) => request.calls !== 0 || request.refused).map((request) => foldedRequest(request)),
    withoutCalls(DATA.switch_requests.filter((request) => request.calls === 0 && !request.refused)));
}

/** The switch. @param unknown  the interface that was asked for, where there is none */
function showOverview(unknown = null) {
  const main = byId('main');
  main.replaceChildren();
  fill(main, {}, [
    el('h2', { class: 'hidden' }, 'The switch'),
    unknown === null ? null : el('p', { class: 'error box', role: 'alert', id: 'unknown' },
      `This switch has no interface ${cut(unknown, NAME_SHOWN)}.`),
    attention(), tiles(),
    DATA.from_state ? el('p', { class: 'remark' },
      'This is the switch as its state folder holds it. A state folder keeps no calls, so the page has none.') : null,
    DATA.without_calls !== 0 ? el('p', { class: 'remark' },
      `The calls of ${counted(DATA.without_calls, 'interface')} are left out: this page holds ${counted(DATA.call_limit, 'call')} at most. `,
      el('code', {}, 'rtif report --calls N'), ' takes another number.') : null,
    occupancy(), extras(), remarks(), switchRequests(),
  ]);
}
