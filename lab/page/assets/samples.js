// samples.js: packets that were traced through the chip while the page was made:
// what each stage found, and whose request put it there.

const FATE_WORDS = { sent: '→ sent', dropped: '✕ dropped', cpu: '◆ to the CPU' };

function sampleRow([mark, stage, id, text, author]) {
  return el('tr', { class: `mark-${mark === '' ? 'none' : mark}` },
    el('td', { class: 'mark' }, mark === '' ? '–' : mark.toUpperCase()),
    el('th', { scope: 'row' }, stage), el('td', { class: 'sample-id' }, id), el('td', {}, text),
    el('td', { class: 'quiet' }, author));
}

function sampleBox(sample) {
  const heads = ['', 'Stage', 'Id', 'What', 'Put there by'];
  return el('details', { class: 'request sample' },
    el('summary', {}, sample.what, ' ',
      el('span', { class: `fate fate-${sample.fate}` }, FATE_WORDS[sample.fate] || sample.fate)),
    el('p', { class: 'remark' }, sample.frame),
    el('div', { class: 'scroll', tabindex: '0', role: 'region', 'aria-label': `A packet ${sample.what}` },
      el('table', { class: 'stages' },
        el('thead', {}, el('tr', {}, heads.map((head, index) => index === 0 ? el('td', {}) : el('th', { scope: 'col' }, head)))),
        el('tbody', {}, sample.lines.map(sampleRow)))),
    el('p', { class: 'verdict' }, sample.summary));
}

/** The sample packets of an interface; nothing where there are none. */
function samplesSection(one) {
  if (!one.samples) return null;
  return el('section', { class: 'card', 'aria-labelledby': 'samples-title' },
    el('h3', { id: 'samples-title' }, 'Sample packets'),
    el('p', { class: 'remark' }, 'From a host on its network, traced through the chip when this page was made.'),
    one.samples.map(sampleBox));
}
