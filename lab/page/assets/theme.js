// theme.js: light and dark. The system's choice counts until the button is
// pressed; where the browser keeps nothing for this page, it counts again next time.

const THEME_KEY = 'rtif-report-theme';

function keptTheme() {
  try {
    return window.localStorage.getItem(THEME_KEY);
  } catch {
    return null;
  }
}

function keepTheme(theme) {
  try {
    window.localStorage.setItem(THEME_KEY, theme);
  } catch {
    // It lasts as long as the page then.
  }
}

function isDark() {
  const chosen = document.documentElement.dataset.theme;
  return chosen ? chosen === 'dark' : window.matchMedia('(prefers-color-scheme: dark)').matches;
}

function themeButton() {
  const kept = keptTheme();
  if (kept === 'dark' || kept === 'light') document.documentElement.dataset.theme = kept;
  const label = () => isDark() ? 'Light' : 'Dark';
  const button = el('button', { type: 'button', id: 'theme', class: 'theme', title: 'Change between light and dark' });
  const show = () => button.replaceChildren(
    el('span', { 'aria-hidden': 'true' }, isDark() ? '☀ ' : '☾ '), label());
  button.addEventListener('click', () => {
    const next = isDark() ? 'light' : 'dark';
    document.documentElement.dataset.theme = next;
    keepTheme(next);
    show();
  });
  window.matchMedia('(prefers-color-scheme: dark)').addEventListener('change', show);
  show();
  return button;
}
