// page.js: what happens when: the page opens, the hash changes, a key is pressed.

let opened = null;

/** Opens the interface of the hash, or shows the switch. */
function follow() {
  let name = null;
  try {
    name = window.location.hash.startsWith('#/') ? decodeURIComponent(window.location.hash.slice(2)) : null;
  } catch {
    // No name that this page has given.
  }
  const one = name === null ? null : DATA.interfaces.find((known) => known.name === name) || null;
  const before = opened;
  opened = one;
  document.body.classList.toggle('detail', one !== null);
  markOpen(one === null ? null : one.name);
  if (one === null) showOverview(name);
  else showInterface(one);
  return before;
}

function onHash() {
  const before = follow();
  if (opened !== null) {
    window.scrollTo(0, 0);
    byId('interface').focus({ preventScroll: true });
  } else if (before !== null) {
    const entry = list.rows.find((known) => known.one === before);
    if (entry && !entry.row.hidden) entry.link.focus();
    else list.input.focus();
  }
}

function close() {
  if (opened !== null) window.location.hash = '';
}

function onKey(event) {
  if (event.ctrlKey || event.altKey || event.metaKey) return;
  const typing = event.target instanceof HTMLInputElement && event.target.type === 'search';
  if (event.key === '/' && !typing) {
    event.preventDefault();
    list.input.focus();
    list.input.select();
  } else if (event.key === 'Escape') {
    // Closes what is open first; then the filter is emptied, wherever the focus is.
    if (list.input.value !== '' && (typing || opened === null)) {
      event.preventDefault();
      list.input.value = '';
      applyFilter();
    } else {
      close();
    }
  }
}

buildTop();
buildList();
follow();
window.addEventListener('hashchange', onHash);
document.addEventListener('keydown', onKey);
byId('skip').addEventListener('click', (event) => {
  event.preventDefault();
  byId('main').focus();
});
