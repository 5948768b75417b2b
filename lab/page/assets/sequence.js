// sequence.js: the calls of a request as a sequence picture. Lifelines stand for
// the layer above, the library, the wrappers with their write queue, the
// services with the store, and the SDK with the chip. A wrapper's write waits in
// the queue, numbered, until a flush takes it to the chip.

const LANES = ['layer above', 'library', 'wrappers', 'services', 'chip'];
const ABOVE = 0, LIBRARY = 1, WRAPPERS = 2, SERVICES = 3, CHIP = 4;
const LANE_OF = { c: CHIP, w: WRAPPERS, s: SERVICES, p: SERVICES };
const KIND_OF = { c: 'SDK', w: 'wrapper', s: 'service', p: 'store' };
const FLUSH = 'fwmpd_trident_batch_flush';

const sequenceOptions = { services: false, messages: false };

/** The steps of a request: calls and messages with what becomes of their writes. */
function stepsOf(request) {
  const steps = [];
  let written = 0;
  let waiting = [];
  for (const item of request.items) {
    if (item < 0) {
      const [isError, who, text] = DATA.messages[-item - 1];
      steps.push({ type: 'message', isError: isError === 1, who, text });
      continue;
    }
    const [letter, name, args = '', result = '', outputs = '', reason = '', queues = 0] = DATA.call_lines[item];
    const call = { type: 'call', letter, name: DATA.functions[name], args, result, outputs, reason,
      failed: result.startsWith('-'), queued: 0, flushed: null };
    if (queues === 1) {
      written += 1;
      call.queued = written;
      waiting.push(written);
    } else if (call.name === FLUSH) {
      call.flushed = waiting;
      waiting = [];
    }
    steps.push(call);
  }
  return { steps, waiting };
}

/** [3, 4, 5] as "3 to 5". */
function writesText(writes) {
  if (writes.length === 0) return 'nothing waits';
  const last = writes[writes.length - 1];
  return writes.length === 1 ? `write ${last} reaches the chip` : `writes ${writes[0]} to ${last} reach the chip`;
}

function arrow(from, to, mark = '') {
  return el('span', { class: `arrow ${to < from ? 'back' : ''} ${mark}`,
    style: `--from:${Math.min(from, to)};--to:${Math.max(from, to)}` });
}

function row(mark, arrows, ...what) {
  return el('li', { class: `step ${mark}` },
    el('span', { class: 'lanes', 'aria-hidden': 'true' }, arrows),
    el('span', { class: 'what' }, what));
}

function callText(call) {
  return [
    el('span', { class: `who who-${call.letter}` }, KIND_OF[call.letter]), ' ',
    el('code', {}, el('b', {}, call.name), el('span', { class: 'args' }, `(${call.args})`),
      call.result === '' ? null : el('span', { class: call.failed ? 'result refused' : 'result' }, ` = ${call.result}`),
      call.outputs === '' ? null : el('span', { class: 'outputs' }, ` [${call.outputs}]`)),
  ];
}

function callRow(call) {
  const lane = LANE_OF[call.letter];
  const failed = call.failed ? 'failed' : '';
  if (call.flushed !== null) {
    const arrows = [arrow(LIBRARY, WRAPPERS)];
    if (call.flushed.length !== 0) arrows.push(arrow(WRAPPERS, CHIP, 'thick'));
    const told = call.reason === '' || /^\d+ writes?$/.test(call.reason) ? writesText(call.flushed)
      : `${writesText(call.flushed)}: ${call.reason}`;
    return row(`flush ${failed}`, arrows, callText(call), el('span', { class: 'note' }, told));
  }
  const notes = [];
  if (call.queued !== 0) notes.push(el('span', { class: 'note' }, `write ${call.queued} waits`));
  if (call.failed) notes.push(el('span', { class: 'note refused' }, '✕ refused', call.reason === '' ? '' : `: ${call.reason}`));
  else if (call.reason !== '' && call.queued === 0) notes.push(el('span', { class: 'note' }, call.reason));
  return row(`call-${call.letter} ${failed}`, arrow(LIBRARY, lane, call.queued !== 0 ? 'dashed' : ''), callText(call), notes);
}

function messageRow(message) {
  return row(message.isError ? 'message loud' : 'message', el('span', { class: 'dot' }),
    el('span', { class: 'who who-m' }, message.isError ? 'error' : 'trace'), ' ',
    el('span', { class: 'said' }, message.text), el('span', { class: 'note' }, message.who));
}

/** Service calls in a row, shown when asked for. */
function foldedRow(calls) {
  const names = [...new Set(calls.map((call) => call.name))];
  const inner = calls.map(callRow);
  const button = el('button', { type: 'button', class: 'fold', 'aria-expanded': 'false' },
    counted(calls.length, 'service call'), el('span', { class: 'args' }, ` ${names.slice(0, 2).join(', ')}${names.length > 2 ? ', …' : ''}`));
  const folded = row('folded', arrow(LIBRARY, SERVICES, 'dotted'), button);
  button.addEventListener('click', () => {
    const open = button.getAttribute('aria-expanded') === 'true';
    button.setAttribute('aria-expanded', String(!open));
    if (open) inner.forEach((one) => one.remove());
    else folded.after(...inner);
  });
  return folded;
}

/** The rows of the steps as the options want them. */
function stepRows(steps) {
  const rows = [];
  let fold = [];
  const endFold = () => {
    if (fold.length !== 0) rows.push(foldedRow(fold));
    fold = [];
  };
  for (const one of steps) {
    if (one.type === 'message') {
      if (!sequenceOptions.messages && !one.isError) continue;
      endFold();
      rows.push(messageRow(one));
    } else if (one.letter === 's' && !sequenceOptions.services && !one.failed) {
      fold.push(one);
    } else {
      endFold();
      rows.push(callRow(one));
    }
  }
  endFold();
  return rows;
}

/** The picture of a request. `code` is what the library returned, null where that isn't known. */
function sequence(request, code = null, wentWrong = Boolean(request.refused)) {
  const { steps, waiting } = stepsOf(request);
  const rows = [row('begin', arrow(ABOVE, LIBRARY), el('b', {}, request.asked)), ...stepRows(steps)];
  if (waiting.length !== 0 || request.refused) {
    rows.push(row('flush', [arrow(ABOVE, WRAPPERS), arrow(WRAPPERS, CHIP, 'thick')],
      el('b', {}, 'end of the request'),
      el('span', { class: request.refused ? 'note refused' : 'note' },
        `${writesText(waiting)}${request.refused ? `: ${request.refused}` : ''}`)));
  }
  if (code !== null) {
    rows.push(row(`end ${code === 0 ? '' : 'failed'}`, arrow(LIBRARY, ABOVE), el('b', {}, `returned ${code}`)));
  }
  return el('div', { class: wentWrong ? 'sequence went-wrong' : 'sequence', role: 'region', tabindex: '0', 'aria-label': `Calls of ${request.asked}` },
    el('div', { class: 'lane-heads', 'aria-hidden': 'true' }, LANES.map((lane) => el('span', {}, lane))),
    el('ol', {}, rows));
}

/** What is shown of all sequences on the page; `draw` draws them anew. */
function sequenceTools(draw) {
  const option = (name, text) => {
    const box = el('input', { type: 'checkbox', id: `show-${name}`, change: () => {
      sequenceOptions[name] = box.checked;
      draw();
    } });
    box.checked = sequenceOptions[name];
    return el('label', { for: `show-${name}` }, box, ' ', text);
  };
  return el('div', { class: 'tools', role: 'group', 'aria-label': 'What the sequences show' },
    option('services', 'service calls one by one'), option('messages', 'the library’s messages'));
}

/** A request whose picture is drawn when it is opened. */
function foldedRequest(request) {
  const head = el('summary', {}, request.asked, ' ', el('span', { class: 'quiet' }, counted(request.calls, 'call')));
  const box = el('details', { class: 'request' }, head);
  box.addEventListener('toggle', () => {
    if (!box.open || box.childElementCount !== 1) return;
    if (request.items === undefined) box.append(el('p', { class: 'remark' }, 'These calls are left out.'));
    else box.append(sequence(request));
  });
  return box;
}
