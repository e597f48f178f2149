'use strict';

// --- The animation: the frames of the strip are shown large, one at a time. ---

const animation = document.querySelector('.animation');
const frames = [...document.querySelectorAll('.strip button')];
const delays = frames.map(frame => Number(frame.dataset.delay) * 10);  // milliseconds
const track = document.querySelector('.track');
const play = document.querySelector('.play');
const plays = Number(animation.dataset.plays) || Infinity;
let now = 0, timer = 0, played = 0;

const seconds = milliseconds => (milliseconds / 1000).toFixed(2) + ' s';
const sum = numbers => numbers.reduce((a, b) => a + b, 0);

function show(number) {
  now = (number + frames.length) % frames.length;
  const frame = frames[now];
  document.querySelector('.stage img').src = frame.querySelector('img').src;
  document.querySelector('.stage img').alt = `frame ${now}`;
  document.querySelector('output').textContent =
    `Frame ${now} of 0–${frames.length - 1} · at ${seconds(sum(delays.slice(0, now)))} · stays ${seconds(delays[now])}`;
  for (const current of document.querySelectorAll('.strip [aria-current]')) {
    current.removeAttribute('aria-current');
    current.tabIndex = -1;
  }
  frame.setAttribute('aria-current', 'true');
  frame.tabIndex = 0;
  if (frame.parentNode.parentNode.contains(document.activeElement)) frame.focus({preventScroll: true});
  const strip = document.querySelector('.strip');
  const middle = frame.offsetLeft - strip.offsetLeft + (frame.offsetWidth - strip.clientWidth) / 2;
  strip.scrollLeft = middle;
  track.querySelector('.now')?.classList.remove('now');
  track.children[now].classList.add('now');
}

function stop() {
  clearTimeout(timer);
  timer = 0;
  play.textContent = 'Play';
}

// Browsers show frames with delays under 20 ms for 100 ms.
function wait() {
  timer = setTimeout(() => {
    if (now === frames.length - 1 && ++played >= plays) return stop();
    show(now + 1);
    wait();
  }, delays[now] < 20 ? 100 : delays[now]);
}

function toggle() {
  if (timer) return stop();
  if (now === frames.length - 1) show(0);
  played = 0;
  play.textContent = 'Pause';
  wait();
}

const kKeys = {
  ArrowLeft: () => show(now - 1),
  ArrowRight: () => show(now + 1),
  Home: () => show(0),
  End: () => show(frames.length - 1),
};

function onKey(event) {
  if (event.ctrlKey || event.altKey || event.metaKey || event.shiftKey) return;
  const elsewhere = event.target.closest?.('.scrolls, summary, a, .play');
  if (event.key === ' ' && !elsewhere) {
    toggle();
  } else if (event.key in kKeys && !event.target.closest?.('.scrolls')) {
    if (event.key.length < 5 && !event.target.closest?.('.animation')) return;  // Home and End move the page
    stop();
    kKeys[event.key]();
  } else {
    return;
  }
  event.preventDefault();
}

if (frames.length > 0) {
  for (const [number, frame] of frames.entries()) {
    const part = track.appendChild(document.createElement('i'));
    part.style.flexGrow = Math.max(delays[number], 1);
    for (const target of [frame, part]) {
      target.addEventListener('click', () => {
        stop();
        show(number);
      });
    }
  }
  play.addEventListener('click', toggle);
  document.addEventListener('keydown', onKey);
  show(0);
  if (frames.length === 1) {
    for (const part of document.querySelectorAll('.controls, .track, .strip')) part.hidden = true;
  }
}

// --- Images that the page holds once, and masks: black where the image is opaque. ---

for (const image of document.querySelectorAll('img[data-frame]')) {
  image.src = frames[image.dataset.frame].querySelector('img').src;
}

for (const mask of document.querySelectorAll('.mask img')) {
  mask.src = mask.closest('.views').querySelector('img').src;
}

// --- Swatches: made when they are first looked at. ---

function swatch(colour, index, uses, mark) {
  const item = document.createElement('li');
  item.title = `${index}: #${colour}` + (uses === undefined ? '' : `, ${Number(uses).toLocaleString('en')} pixels`);
  item.className = (mark ? 'marked ' : '') + (uses === '0' ? 'unused' : '');
  item.append(document.createElement('i'), document.createElement('b'), document.createElement('br'),
              `#${colour}`, document.createElement('br'));
  item.querySelector('i').style.background = `#${colour}`;
  item.querySelector('b').textContent = index;
  if (mark) item.append(mark, document.createElement('br'));
  item.append(uses === undefined ? '' : uses === '0' ? '–' : Number(uses).toLocaleString('en', {notation: 'compact'}));
  return item;
}

function fill(palette) {
  if (palette.firstChild) return;
  const words = text => text.split(' ').filter(word => word);
  const uses = words(palette.dataset.uses);
  const [marked, mark] = words(palette.dataset.marks);
  const list = palette.appendChild(document.createElement('ol'));
  for (const [index, colour] of words(palette.dataset.colours).entries()) {
    list.append(swatch(colour, index, uses[index], index === Number(marked) ? mark : ''));
  }
}

for (const palette of document.querySelectorAll('.palette')) {
  const details = palette.closest('details');
  if (details) details.addEventListener('toggle', () => fill(palette));
  else fill(palette);
}

document.documentElement.dataset.ready = frames.length;
