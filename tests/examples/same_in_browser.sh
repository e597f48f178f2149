#!/usr/bin/env bash
# What a real browser makes of GIF files before and after examples/edit.lua, which without options changes nothing: the
# same frames, times, repetitions and pixels, composited, of every file that it decodes. Arguments: the script host, the
# folder of examples, GIF files. Status 77: there is no browser.
set -euo pipefail
gifhost="$1" examples="$2"
shift 2

browser="$(command -v chromium || command -v chromium-browser || true)"
[ -n "$browser" ] || { echo "skipped: the Debian package chromium is not installed"; exit 77; }
folder="$(mktemp -d)"
pid=
stop() {
  [ -z "$pid" ] || { kill "$pid"; wait "$pid"; } 2>/dev/null || true
  rm -rf "$folder"
}
trap stop EXIT

{
  echo '<script>const files = ['
  for gif in "$@"; do
    edited=
    "$gifhost" "$examples/edit.lua" "$gif" "$folder/edited.gif" > "$folder/said" 2>&1 &&
      edited="$(base64 -w0 "$folder/edited.gif")" || cat "$folder/said" >&2
    echo "{name: '${gif##*/}', before: '$(base64 -w0 "$gif")', after: '$edited'},"
  done
  cat <<'END'
];
async function decoder_of(text) {
  const data = Uint8Array.from(atob(text), c => c.charCodeAt(0));
  const decoder = new ImageDecoder({data, type: 'image/gif'});
  await decoder.tracks.ready;
  await decoder.completed;
  return decoder;
}
async function frame(decoder, frameIndex) {
  const {image} = await decoder.decode({frameIndex});
  const pixels = new Uint8Array(image.allocationSize());
  await image.copyTo(pixels);
  const told = [image.timestamp, image.duration, image.codedWidth, image.codedHeight, image.format].join(' ');
  image.close();
  return {told, pixels};
}
async function compare(file) {
  let before, after;
  try {
    before = await decoder_of(file.before);
    await frame(before, 0);
  } catch (problem) {
    return 'not decoded before: ' + problem.message;
  }
  try {
    after = await decoder_of(file.after);
    const [tracks, count] = [[before, after].map(decoder => decoder.tracks.selectedTrack), 'frameCount'];
    for (const what of ['frameCount', 'repetitionCount']) {
      if (tracks[0][what] !== tracks[1][what]) return `DIFFERS: ${what} ${tracks[0][what]}, then ${tracks[1][what]}`;
    }
    for (let i = 0; i < tracks[0][count]; ++i) {
      const [a, b] = [await frame(before, i), await frame(after, i)];
      if (a.told !== b.told) return `DIFFERS: frame ${i} is ${a.told}, then ${b.told}`;
      if (a.pixels.some((value, at) => value !== b.pixels[at])) return `DIFFERS: pixels of frame ${i}`;
    }
    return `equal in ${tracks[0][count]} frames`;
  } catch (problem) {
    return 'DIFFERS: not decoded after: ' + problem.message;
  }
}
(async () => {
  for (const file of files) console.log(`seen ${file.name}: ${await compare(file)} .`);
  console.log('seen all .');
})();
</script>
END
} > "$folder/page.html"

"$browser" --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking \
  --disable-component-update --disable-sync --user-data-dir="$folder/profile" --enable-logging=stderr \
  "file://$folder/page.html" > "$folder/log" 2>&1 &
pid=$!
for _ in $(seq 600); do
  grep -q 'seen all' "$folder/log" && break
  sleep 0.2
done
seen="$(sed -n 's/.*"seen \(.*\) \.".*/\1/p' "$folder/log")"
echo "$seen"
case "$seen" in *all) ;; *) tail -5 "$folder/log"; exit 1 ;; esac
! grep -q DIFFERS <<< "$seen" && grep -q equal <<< "$seen"
