// graph.js: an interface's objects in the chip, drawn from the ports on the left
// to the next hops on the right, and the same in words.

const NODE = { width: 166, head: 44, line: 16, pad: 8, gapX: 48, gapY: 14, top: 16, below: 46 };
const TABLE_NAMES = {
  port: 'Port', trunk: 'Trunk', vlan: 'VLAN', vlan_translation: 'VLAN translation',
  l3_ingress: 'L3 ingress', l3_interface: 'L3 interface', tunnel: 'Tunnel', station: 'L2 station',
  egress: 'Next hop', more: 'Not drawn',
};

function cut(text, letters) {
  return text.length <= letters ? text : `${text.slice(0, Math.max(letters - 1, 1))}…`;
}

function authorsText(object) {
  if (!object.authors) return '';
  const more = object.more_authors ? ` and ${number(object.more_authors)} more` : '';
  return `written by ${object.authors.join(', ')}${more}`;
}

/** What a node shows: the names of what isn't drawn one by one, lines of fields otherwise. */
function linesOf(object) {
  if (object.table === 'more') return [['', object.id]];
  if (object.missing) return [['', '✕ the chip has none']];
  return object.fields;
}

/** An object's id with the word that it goes by. */
function idText(object) {
  if (object.table === 'more') return '';
  const word = { station: 'station', egress: 'egress object', l3_ingress: 'id', l3_interface: 'id', vlan: 'id', tunnel: 'index' }[object.table];
  return word ? `${word} ${object.id}` : object.id;
}

/** Gives each node its place; the road of a packet is the first row. */
function layOut(nodes) {
  const columns = [...new Set(nodes.map((node) => node.column))].sort((a, b) => a - b);
  const bottoms = new Map();
  for (const node of [...nodes].sort((a, b) => a.row - b.row)) {
    node.x = columns.indexOf(node.column) * (NODE.width + NODE.gapX) + 1;
    const first = NODE.top + (node.row === 0 ? 0 : NODE.below);
    node.y = bottoms.has(node.column) ? Math.max(bottoms.get(node.column) + NODE.gapY, node.row === 0 ? 0 : first) : first;
    node.height = NODE.head + linesOf(node.object).length * NODE.line + (node.object.authors ? NODE.line + 2 : 0) + NODE.pad;
    bottoms.set(node.column, node.y + node.height);
  }
  return {
    width: columns.length * (NODE.width + NODE.gapX) - NODE.gapX + 2,
    height: Math.max(...bottoms.values(), 0) + NODE.top,
  };
}

function nodeShape(node) {
  const { object } = node;
  const id = idText(object);
  const lines = linesOf(object).map(([name, value], index) => {
    const y = NODE.head + index * NODE.line + 11;
    const room = Math.floor((NODE.width - 26 - name.length * 6) / 6.7);
    return [
      name === '' ? null : svg('text', { class: 'field', x: 12, y }, name),
      svg('text', { class: 'value', x: name === '' ? 12 : NODE.width - 10, y, 'text-anchor': name === '' ? 'start' : 'end' }, cut(value, room)),
    ];
  });
  const by = object.authors ? svg('text', { class: 'author', x: 12, y: node.height - 9 },
    cut(`by ${object.authors[0]}${object.authors.length + object.more_authors > 1 ? ', …' : ''}`, 25)) : null;
  const whole = [`${object.title}, ${id}`, ...object.fields.map(([name, value]) => `${name} ${value}`.trim()), authorsText(object)];
  return svg('g', { class: `node node-${object.table}${object.missing ? ' missing' : ''}`, transform: `translate(${node.x} ${node.y})` },
    svg('title', {}, whole.filter((text) => text !== '').join('\n')),
    svg('rect', { class: 'box', width: NODE.width, height: node.height, rx: 7 }),
    svg('rect', { class: 'stripe', width: 4, height: node.height - 14, x: 0, y: 7, rx: 2 }),
    svg('text', { class: 'node-title', x: 12, y: 20 }, cut(object.title, 19)),
    svg('text', { class: 'node-id', x: 12, y: 35 }, cut(id, 22)), lines, by);
}

/** A tie from the right of one node to the left of another, at their heads. */
function tieShape(from, to) {
  const y1 = from.y + 17, y2 = to.y + 17;
  const x1 = from.x + NODE.width, x2 = to.x;
  // What passes over a column bends before it.
  const bend = Math.min(NODE.gapX, x2 - x1) / 2;
  return svg('g', { class: 'tie' },
    svg('path', { d: `M${x1} ${y1} C${x1 + bend} ${y1} ${x2 - bend} ${y2} ${x2 - 7} ${y2}` }),
    svg('path', { class: 'tip', d: `M${x2 - 8} ${y2 - 4} L${x2 - 1} ${y2} L${x2 - 8} ${y2 + 4} Z` }));
}

function tieLabel(from, to, what) {
  const far = to.x - from.x > NODE.width + NODE.gapX;
  // Below each other, the ends of many ties are one; their beginnings aren't.
  const atEnd = !far && to.y > from.y;
  const x = far ? from.x + NODE.width + 8 : (from.x + NODE.width + to.x) / 2;
  const y = (atEnd ? to.y : from.y) + 11;
  return svg('text', { class: 'tie-label', x: far ? x : x - 2, y, 'text-anchor': far ? 'start' : 'middle' }, what);
}

function inWords(nodes, ties) {
  return el('details', { class: 'words' }, el('summary', {}, 'The same in words'),
    el('ul', {}, nodes.map((node, index) => el('li', {},
      el('strong', {}, `${TABLE_NAMES[node.object.table] || node.object.table} ${node.object.id}`),
      node.object.title === '' || TABLE_NAMES[node.object.table] === node.object.title || node.object.title.endsWith(` ${node.object.id}`) ? '' : ` (${node.object.title})`,
      node.object.missing ? ': the chip has none' : node.object.fields.length === 0 ? '' : `: ${node.object.fields.map(([name, value]) => `${name} ${value}`.trim()).join(', ')}`,
      ties.filter(([from]) => from === index).map(([, to, what]) =>
        `; ${what === '' ? 'leads' : what} → ${nodes[to].object.title} ${nodes[to].object.title.endsWith(` ${nodes[to].object.id}`) ? '' : nodes[to].object.id}`.trimEnd()),
      node.object.authors ? el('span', { class: 'quiet' }, `; ${authorsText(node.object)}`) : null))));
}

/** The picture of an interface's objects. */
function graph(one) {
  const nodes = one.graph.nodes.map(([object, column, row]) => ({ object: DATA.objects[object], column, row }));
  if (nodes.length === 0) return el('p', { class: 'remark' }, 'The chip has nothing of this interface.');
  const { ties } = one.graph;
  const size = layOut(nodes);
  // What goes alike from one node to several is labelled once.
  const labelled = ties.filter(([from, , what], index) => what !== ''
    && ties.findIndex((other) => other[0] === from && other[2] === what) === index);
  const picture = svg('svg', {
    class: 'graph', viewBox: `0 0 ${size.width} ${size.height}`, width: size.width, height: size.height,
    role: 'img', 'aria-label': `${counted(nodes.length, 'object')} of ${one.name} in the chip; the same is in words below`,
    style: `min-width:${Math.round(size.width * 0.78)}px;max-width:${size.width}px`,
  },
  ties.map(([from, to]) => tieShape(nodes[from], nodes[to])),
  nodes.map(nodeShape),
  labelled.map(([from, to, what]) => tieLabel(nodes[from], nodes[to], what)));
  return el('div', {}, el('div', { class: 'scroll', tabindex: '0', role: 'region', 'aria-label': 'Graph' }, picture),
    inWords(nodes, ties));
}
