// graph.js: an interface's objects in the chip, drawn from the ports on the left
// to the next hops on the right, and the same in words.

const NODE = { width: 170, narrow: 116, head: 44, line: 16, pad: 8, gapX: 26, gapY: 14, top: 16, below: 46 };
const LETTER = { title: 7.6, id: 6.3, field: 6.5, value: 6.6, author: 5.9, label: 5.8 };
// A graph never becomes smaller than this; it scrolls instead.
const LEAST_SCALE = 0.75;
const TABLE_NAMES = {
  port: 'Port', trunk: 'Trunk', vlan: 'VLAN', vlan_translation: 'VLAN translation',
  l3_ingress: 'L3 ingress', l3_interface: 'L3 interface', tunnel: 'Tunnel', station: 'L2 station',
  egress: 'Next hop', more: 'Not drawn',
};

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

/** How wide a node has to be for its texts, within limits. */
function widthOf(node) {
  const { object } = node;
  const widths = linesOf(object).map(([name, value]) => 30 + name.length * LETTER.field + value.length * LETTER.value);
  widths.push(24 + object.title.length * LETTER.title, 24 + idText(object).length * LETTER.id);
  return Math.min(Math.max(...widths, NODE.narrow), NODE.width);
}

/** A label on one line, or on two, above and below its arrow. */
function labelLines(what) {
  if (what.length <= 9 || !what.includes(' ')) return [what];
  const at = what.indexOf(' ');
  return [what.slice(0, at), what.slice(at + 1)];
}

/** The left edge of each column: each as wide as its nodes, each gap as what is written there. */
function columnsOf(nodes, ties) {
  const columns = [...new Set(nodes.map((node) => node.column))].sort((a, b) => a - b);
  let x = 1;
  return columns.map((column) => {
    const width = Math.max(...nodes.filter((node) => node.column === column).map(widthOf));
    const here = ties.filter(([from]) => nodes[from].column === column);
    const letters = here.flatMap(([, , what]) => labelLines(what).map((line) => line.length));
    const place = { column, x, width };
    x += width + Math.max(NODE.gapX, ...letters.map((count) => count * LETTER.label + 14));
    return place;
  });
}

/** Gives each node its place; the road of a packet is the first row. */
function layOut(nodes, ties) {
  const columns = columnsOf(nodes, ties);
  const bottoms = new Map();
  for (const node of [...nodes].sort((a, b) => a.row - b.row)) {
    const place = columns.find((known) => known.column === node.column);
    node.x = place.x;
    node.width = place.width;
    const first = NODE.top + (node.row === 0 ? 0 : NODE.below);
    node.y = bottoms.has(node.column) ? Math.max(bottoms.get(node.column) + NODE.gapY, node.row === 0 ? 0 : first) : first;
    node.height = NODE.head + linesOf(node.object).length * NODE.line + (node.object.authors ? NODE.line + 2 : 0) + NODE.pad;
    bottoms.set(node.column, node.y + node.height);
  }
  return {
    width: Math.ceil(columns.at(-1).x + columns.at(-1).width) + 1,
    height: Math.max(...bottoms.values(), 0) + NODE.top,
  };
}

function nodeShape(node) {
  const { object } = node;
  const id = idText(object);
  const lines = linesOf(object).map(([name, value], index) => {
    const y = NODE.head + index * NODE.line + 11;
    const room = Math.floor((node.width - 26 - name.length * LETTER.field) / LETTER.value);
    return [
      name === '' ? null : svg('text', { class: 'field', x: 12, y }, name),
      svg('text', { class: 'value', x: name === '' ? 12 : node.width - 10, y, 'text-anchor': name === '' ? 'start' : 'end' }, cut(value, room)),
    ];
  });
  const by = object.authors ? svg('text', { class: 'author', x: 12, y: node.height - 9 },
    cut(`by ${object.authors[0]}${object.authors.length + object.more_authors > 1 ? ', …' : ''}`, Math.floor((node.width - 20) / LETTER.author))) : null;
  const whole = [`${object.title}, ${id}`, ...object.fields.map(([name, value]) => `${name} ${value}`.trim()), authorsText(object)];
  return svg('g', { class: `node node-${object.table}${object.missing ? ' missing' : ''}`, transform: `translate(${node.x} ${node.y})` },
    svg('title', {}, whole.filter((text) => text !== '').join('\n')),
    svg('rect', { class: 'box', width: node.width, height: node.height, rx: 7 }),
    svg('rect', { class: 'stripe', width: 4, height: node.height - 14, x: 0, y: 7, rx: 2 }),
    svg('text', { class: 'node-title', x: 12, y: 20 }, cut(object.title, Math.floor((node.width - 22) / LETTER.title))),
    svg('text', { class: 'node-id', x: 12, y: 35 }, cut(id, Math.floor((node.width - 20) / LETTER.id))), lines, by);
}

/** A tie from the right of one node to the left of another, at their heads. */
function tieShape(from, to) {
  const y1 = from.y + 17, y2 = to.y + 17;
  const x1 = from.x + from.width, x2 = to.x;
  // What passes over a column bends before it.
  const bend = Math.min(48, x2 - x1) / 2;
  return svg('g', { class: 'tie' },
    svg('path', { d: `M${x1} ${y1} C${x1 + bend} ${y1} ${x2 - bend} ${y2} ${x2 - 7} ${y2}` }),
    svg('path', { class: 'tip', d: `M${x2 - 8} ${y2 - 4} L${x2 - 1} ${y2} L${x2 - 8} ${y2 + 4} Z` }));
}

function tieLabel(from, to, what) {
  const far = to.x - from.x - from.width > NODE.narrow;
  // Below each other, the ends of many ties are one; their beginnings aren't.
  const atEnd = !far && to.y > from.y;
  const x = far ? from.x + from.width + 7 : (from.x + from.width + to.x) / 2 - 2;
  const y = (atEnd ? to.y : from.y) + 11;
  return svg('text', { class: 'tie-label', y, 'text-anchor': far ? 'start' : 'middle' },
    labelLines(what).map((line, index) => svg('tspan', { x, dy: index === 0 ? 0 : 17 }, line)));
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

/** Fades the right edge of a box while there is more behind it, and says so below. */
function tellWhatIsCut(box, hint) {
  const tell = () => {
    const rest = box.scrollWidth - box.clientWidth;
    hint.hidden = rest <= 1;
    box.classList.toggle('cut-off', rest - box.scrollLeft > 1);
  };
  box.addEventListener('scroll', tell);
  new ResizeObserver(tell).observe(box);
}

/** The picture of an interface's objects. */
function graph(one) {
  const nodes = one.graph.nodes.map(([object, column, row]) => ({ object: DATA.objects[object], column, row }));
  if (nodes.length === 0) return el('p', { class: 'remark' }, 'The chip has nothing of this interface.');
  const { ties } = one.graph;
  const size = layOut(nodes, ties);
  // What goes alike from one node to several is labelled once.
  const labelled = ties.filter(([from, , what], index) => what !== ''
    && ties.findIndex((other) => other[0] === from && other[2] === what) === index);
  const picture = svg('svg', {
    class: 'graph', viewBox: `0 0 ${size.width} ${size.height}`, width: size.width, height: size.height,
    role: 'img', 'aria-label': `${counted(nodes.length, 'object')} of ${one.name} in the chip; the same is in words below`,
    style: `min-width:${Math.floor(size.width * LEAST_SCALE)}px;max-width:${size.width}px`,
  },
  ties.map(([from, to]) => tieShape(nodes[from], nodes[to])),
  nodes.map(nodeShape),
  labelled.map(([from, to, what]) => tieLabel(nodes[from], nodes[to], what)));
  const box = el('div', { class: 'scroll graph-box', tabindex: '0', role: 'region', 'aria-label': 'Graph' }, picture);
  const hint = el('p', { class: 'remark graph-hint', hidden: true }, 'Scroll sideways for the rest →');
  tellWhatIsCut(box, hint);
  return el('div', {}, box, hint, inWords(nodes, ties));
}
