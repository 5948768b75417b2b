// filter.js: the words of the filter. All of them must fit. "kind:svi" looks at
// one property, a bare word at all of them, "-word" takes away what fits it.

const PROPERTIES = {
  name: (one) => [one.name],
  kind: (one) => [one.kind],
  state: (one) => [one.state],
  vlan: (one) => [one.vlan],
  vrf: (one) => [one.vrf, one.vrf_name],
  iif: (one) => [one.iif],
  mtu: (one) => [one.mtu],
  port: (one) => one.ports,
  family: (one) => one.families,
  address: (one) => one.addresses,
};
// Numbers are compared whole, so that "vlan:10" isn't VLAN 100 too.
const WHOLE = new Set(['kind', 'state', 'vlan', 'vrf', 'iif', 'mtu', 'port']);

/** All that a bare word may be found in. */
function everything(one) {
  const values = Object.values(PROPERTIES).flatMap((property) => property(one));
  return [...values, one.error].filter((value) => value !== undefined && value !== null);
}

/** Whether a word fits an interface. */
function fits(one, word) {
  const colon = word.indexOf(':');
  const key = word.slice(0, colon);
  const wanted = word.slice(colon + 1);
  if (colon > 0 && Object.hasOwn(PROPERTIES, key)) {
    const values = PROPERTIES[key](one).filter((value) => value !== undefined && value !== null)
      .map((value) => String(value).toLowerCase());
    if (wanted === '') return true;
    return values.some((value) => WHOLE.has(key) ? value === wanted : value.includes(wanted));
  }
  return everything(one).some((value) => typeof value === 'number'
    ? String(value) === word : String(value).toLowerCase().includes(word));
}

/** What stands before a colon and names no property; a MAC or an IPv6 address isn't meant. */
function unknownKeys(text) {
  const keys = text.toLowerCase().split(/\s+/).map((word) => /^-?([a-z_-]+):/.exec(word));
  return keys.filter((found) => found !== null && !Object.hasOwn(PROPERTIES, found[1])
    && !/^-?[0-9a-f]{1,4}:[0-9a-f:]*$/.test(found.input)).map((found) => found[1]);
}

/** Whether an interface fits all words of a text. */
function passes(one, text) {
  return text.toLowerCase().split(/\s+/).filter((word) => word !== '' && word !== '-')
    .every((word) => word.startsWith('-') ? !fits(one, word.slice(1)) : fits(one, word));
}
