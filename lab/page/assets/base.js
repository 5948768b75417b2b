// base.js: what all scripts of the page share: its data, and a way to make
// elements. Whatever comes from the data goes in as text, never as markup.

const DATA = JSON.parse(document.getElementById('data').textContent);
const SVG = 'http://www.w3.org/2000/svg';

/** Puts attributes and children on an element. A function is a listener, null is left out. */
function fill(element, attributes, children) {
  for (const [name, value] of Object.entries(attributes)) {
    if (value === null || value === undefined || value === false) continue;
    if (typeof value === 'function') element.addEventListener(name, value);
    else element.setAttribute(name, value === true ? '' : String(value));
  }
  for (const child of children.flat(3)) {
    if (child === null || child === undefined || child === false || child === '') continue;
    element.append(child instanceof Node ? child : document.createTextNode(String(child)));
  }
  return element;
}

/** An element of HTML. */
function el(tag, attributes = {}, ...children) {
  return fill(document.createElement(tag), attributes, children);
}

/** An element of SVG. */
function svg(tag, attributes = {}, ...children) {
  return fill(document.createElementNS(SVG, tag), attributes, children);
}

const byId = (id) => document.getElementById(id);

/** 12345 as "12,345". */
function number(value) {
  return String(value).replace(/\B(?=(\d{3})+$)/g, ',');
}

/** A text that isn't longer than that many letters. */
function cut(text, letters) {
  return text.length <= letters ? text : `${text.slice(0, Math.max(letters - 1, 1))}…`;
}

/** "1 call", "2 calls". */
function counted(value, what) {
  return `${number(value)} ${what}${value === 1 ? '' : 's'}`;
}

/** What an interface's state looks like beside its word, for who sees no colours. */
const STATE_SIGNS = { up: '●', stopped: '■', failed: '✕', kept: '◐', down: '○' };

/** A state as a sign and a word. */
function stateBadge(state) {
  return el('span', { class: `state state-${state}` },
    el('span', { 'aria-hidden': 'true', class: 'sign' }, STATE_SIGNS[state] || '?'), ' ', state);
}

/** The hash of an interface. */
function hashOf(name) {
  return `#/${encodeURIComponent(name)}`;
}

/** A link that opens an interface; the plain name of one that there isn't. */
function linkTo(name) {
  const known = DATA.interfaces.some((one) => one.name === name);
  return known ? el('a', { href: hashOf(name) }, name) : name;
}

/** A table with a head; each cell is a text or an element, the first of a row heads it. */
function table(caption, heads, rows) {
  return el('div', { class: 'scroll', tabindex: '0', role: 'region', 'aria-label': caption },
    el('table', { class: 'stacks' },
      el('thead', {}, el('tr', {}, heads.map((head) => el('th', { scope: 'col' }, head)))),
      el('tbody', {}, rows.map((row) => el('tr', {}, row.map((cell, index) =>
        index === 0 ? el('th', { scope: 'row' }, cell) : el('td', { 'data-head': heads[index] }, cell)))))));
}
