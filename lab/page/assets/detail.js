// detail.js: one interface: its facts, its objects in the chip as a graph, its
// calls as a sequence. What is drawn is drawn when the interface is opened.

function facts(one) {
  const all = [
    ['Kind', one.kind],
    ['Number', one.iif === null ? 'none' : one.iif],
    ['VLAN', one.vlan === undefined ? 'none' : one.vlan],
    ['VRF', one.vrf_name === undefined ? 'none' : one.vrf_name === String(one.vrf) ? one.vrf : `${one.vrf_name} (${one.vrf})`],
    ['MTU', one.mtu === undefined ? 'none' : one.mtu],
    ['Routes', one.families.length === 0 ? 'nothing' : one.families.join(', ')],
    ['Ports', one.ports.length === 0 ? 'none' : one.ports.join(', ')],
  ];
  if (one.addresses.length !== 0) all.push(['Addresses', one.addresses.join(', ')]);
  all.push(['ifindex', `0x${one.ifindex.toString(16)}`]);
  if (one.code !== undefined) all.push(['Library returned', one.code]);
  return el('dl', { class: 'facts wide' }, all.map(([name, value]) =>
    el('div', {}, el('dt', {}, name), el('dd', {}, value))));
}

function callsSection(one) {
  if (DATA.from_state) {
    return el('section', { class: 'card' }, el('h3', {}, 'Calls'),
      el('p', { class: 'remark' }, 'A state folder keeps what the chip holds, not the calls that have led there.'));
  }
  const kept = one.requests.some((request) => request.items !== undefined);
  const box = el('div', { class: 'sequences' });
  const draw = () => box.replaceChildren(
    ...one.requests.map((request, index) => sequence(request, index === one.requests.length - 1 ? one.code : null, one.state !== 'up')));
  const section = el('section', { class: 'card', 'aria-labelledby': 'calls-title' },
    el('h3', { id: 'calls-title' }, 'Calls ', el('span', { class: 'quiet' }, number(one.calls))));
  if (!kept && one.calls !== 0) {
    section.append(el('p', { class: 'remark' },
      `The calls of this interface are left out: the page holds ${counted(DATA.call_limit, 'call')} at most.`));
    return section;
  }
  section.append(sequenceTools(draw), box);
  draw();
  if (one.others.length !== 0) {
    section.append(el('h4', {}, 'Of its VLAN, private VLANs and virtual MACs'),
      ...one.others.map((request) => foldedRequest(request)));
  }
  return section;
}

/** The interfaces beside one, in the order of the list and as far as the filter lets them. */
function neighbours(one) {
  const shown = list.rows.filter((entry) => !entry.row.hidden || entry.one === one).map((entry) => entry.one);
  const at = shown.indexOf(one);
  return [shown[at - 1], shown[at + 1]];
}

function step(one, text, rel) {
  return one ? el('a', { class: 'button', href: hashOf(one.name), rel, 'aria-label': `${text}: ${one.name}` }, text)
    : el('span', { class: 'button off', 'aria-hidden': 'true' }, text);
}

function showInterface(one) {
  const main = byId('main');
  const [before, after] = neighbours(one);
  main.replaceChildren();
  fill(main, {}, [
    el('nav', { class: 'steps', 'aria-label': 'Interfaces' },
      el('a', { class: 'button', href: '#', id: 'close' }, '← All interfaces'),
      el('span', { class: 'spring' }),
      step(before, 'Previous', 'prev'), step(after, 'Next', 'next')),
    el('div', { class: 'heading' },
      el('h2', { id: 'interface', tabindex: '-1' }, one.name), stateBadge(one.state)),
    one.error ? el('p', { class: 'error box', role: 'note' }, one.error) : null,
    facts(one),
    el('section', { class: 'card', 'aria-labelledby': 'graph-title' },
      el('h3', { id: 'graph-title' }, 'In the chip'), graph(one)),
    samplesSection(one),
    callsSection(one),
  ]);
}
