#!/usr/bin/env bash
# What the page of examples/report.lua does in a real browser as wide as a phone's: its script runs, keys step and play
# the frames, nothing is fetched; and on a phone, a tablet and a desk what blocks say has room when their bytes are shown. Arguments: the script host, the folder of examples, a GIF of 16 frames. Status 77: there is no browser.
set -euo pipefail
gifhost="$1" examples="$2" gif="$3"

browser="$(command -v chromium || command -v chromium-browser || true)"
[ -n "$browser" ] || { echo "skipped: the Debian package chromium is not installed"; exit 77; }
folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT
"$gifhost" "$examples/report.lua" "$gif" "$folder/page.html"

cat >> "$folder/page.html" <<'END'
<script>
const seen = [];
const screens = [390, 768, 1400].map(width => {
  const frame = document.createElement('iframe');
  frame.style.width = width + 'px';
  frame.srcdoc = document.documentElement.outerHTML.replace(/<script[^]*/, '');
  return frame;
});
const loaded = Promise.all(screens.map(frame => new Promise(done => { frame.onload = done; })));
screens.forEach(frame => document.body.append(frame));
const has_room = ({contentDocument: page, clientWidth: width}) => {
  page.querySelectorAll('tbody details').forEach(details => details.open = true);
  const cells = [...page.querySelectorAll('tbody td:nth-child(3)')].map(cell => cell.getBoundingClientRect());
  return cells.length > 10 && cells.every(cell => cell.width > 200 && cell.right <= width) &&
      page.documentElement.scrollWidth <= width;
};
const press = key => (document.activeElement ?? document.body).dispatchEvent(
    new KeyboardEvent('keydown', {key, bubbles: true, cancelable: true}));
const note = what => seen.push(what + '=' + document.querySelector('.strip [aria-current] b').textContent);
note('start');
press('ArrowRight'); press('ArrowRight'); note('right');
press('ArrowLeft'); press('ArrowLeft'); press('ArrowLeft'); note('round');
document.querySelector('.strip [aria-current]').focus();
press('Home'); note('home');
press('ArrowRight'); seen.push('focus=' + document.activeElement.querySelector('b').textContent);
press(' '); seen.push(document.querySelector('.play').textContent);
press('ArrowRight'); seen.push(document.querySelector('.play').textContent);
document.querySelector('article details').open = true;
const images = [...document.images];
setTimeout(() => loaded.then(() => {
  seen.push('room=' + screens.map(has_room));
  seen.push('broken=' + images.filter(image => !image.naturalWidth).length);
  seen.push('fetched=' + performance.getEntriesByType('resource').filter(entry => !entry.name.startsWith('data:')).length);
  seen.push('swatches=' + document.querySelectorAll('article details[open] .palette li').length);
  document.body.append('Seen: ' + seen.join(' ') + '.');
}), 500);
</script>
END

options=(--headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking
         --disable-component-update --disable-sync --user-data-dir="$folder/profile" --virtual-time-budget=3000
         --window-size=390,800)  # a phone's
page="$(timeout 100 "$browser" "${options[@]}" --dump-dom "file://$folder/page.html" 2> "$folder/errors")" ||
  { cat "$folder/errors"; exit 1; }
seen="$(grep -o 'Seen: [^.]*\.' <<< "$page" | tail -1)"
expected="Seen: start=0 right=2 round=15 home=0 focus=1 Pause Play room=true,true,true broken=0 fetched=0 swatches=64."
[ "$seen" = "$expected" ] || { printf '%s\nexpected\n%s\n' "$seen" "$expected"; exit 1; }
