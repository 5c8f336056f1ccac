#!/bin/sh
# Runs scripts/gallery in a copy, with a preview that knows one preset. A second run writes the same files, and
# --check names each file that differs.
set -eu

rm -rf "$WORK_DIR"
mkdir -p "$WORK_DIR/scripts" "$WORK_DIR/docs" "$WORK_DIR/tests/manifest/golden"
cd "$WORK_DIR"
cp "$SOURCE_DIR/scripts/gallery" "$SOURCE_DIR/scripts/gallery.html" scripts
cp "$SOURCE_DIR/tests/manifest/golden/RenderGraphManifest.h" tests/manifest/golden
cat >preview <<END
#!/bin/sh
[ "\$1" = list ] && { printf 'presets:\n  gba-lcd\ntest pictures:\n  none\n'; exit; }
[ "\$2" = stock ] && SET= # the source
exec "$PREVIEW" "\$@" \${SET-}
END
chmod +x preview
export RENDER_GRAPH_PREVIEW="$WORK_DIR/preview" GALLERY_DIR="$WORK_DIR/drawn"

fail() {
    echo "FAILED: $*" >&2
    cat log >&2
    exit 1
}

scripts/gallery >log 2>&1 || fail 'scripts/gallery failed'
[ "$(ls docs docs/presets)" = 'docs:
presets
presets.md

docs/presets:
all.jpg
gba-lcd-detail.jpg
gba-lcd.jpg
gba-lcd.svg' ] || fail "$(ls docs docs/presets)"
# shellcheck disable=SC2016 # Markdown, not a command
grep -qFx '| `ghost_rise` | **0.706** | 0.5 | 0.05 to 1 | 0.05 | LCD Response Rise (drive) |' docs/presets.md ||
    fail 'docs/presets.md lacks the row of ghost_rise'
[ "$(grep -c 'src="data:image/\(png\|jpeg\);base64,[0-9A-Za-z+/]\{1000\}' drawn/presets.html)" = 2 ] ||
    fail 'the page lacks a picture'
grep -qFx '<tr><td><code>ghost_rise</code><td><strong>0.706</strong><td>0.5<td>0.05 to 1<td>0.05<td>LCD Response Rise (drive)' \
    drawn/presets.html || fail 'the page lacks the row of ghost_rise'
cp -R docs before
scripts/gallery >log 2>&1 || fail 'the second run failed'
diff -r before docs >log || fail 'the second run wrote other files'
scripts/gallery --check >log 2>&1 || fail '--check rejects what was just written'

# check <expected message> [preset]: --check fails with this message.
check() {
    scripts/gallery --check ${2+"$2"} >log 2>&1 && fail '--check passed'
    sed -i -e '/^gallery: drawing/d' -e 's/ by [0-9.]* levels.*/./' -e "s|$WORK_DIR/||g" log
    [ "$(cat log)" = "$1
gallery: if you intended this, run scripts/gallery and commit what it writes" ] || fail 'the message differs'
}

# Moves one slider by one step.
SET='--set lcd_grid_contrast=0.45' check 'gallery: docs/presets/all.jpg differs from the new picture.
gallery: docs/presets/gba-lcd-detail.jpg differs from the new picture.
gallery: docs/presets/gba-lcd.jpg differs from the new picture.
gallery: docs/presets/gba-lcd.svg differs from drawn/presets/gba-lcd.svg'
[ "$(pngtopam drawn/gba-lcd-detail-difference.png | pamfile -machine | sed 's,.*: ,,')" = 'PPM RAW 1200 300 3 255 RGB' ] ||
    fail 'the picture of the difference is not three pictures of 400x300 side by side'

jpegtopnm -quiet docs/presets/gba-lcd.jpg | pamcut -width 99 | pnmtojpeg >cut.jpg
mv cut.jpg docs/presets/gba-lcd.jpg
rm docs/presets/gba-lcd-detail.jpg
check 'gallery: there is no docs/presets/gba-lcd-detail.jpg
gallery: docs/presets/gba-lcd.jpg and drawn/presets/gba-lcd.jpg differ in size' gba-lcd

rm -r docs
cp -R before docs
echo >>docs/presets.md
touch docs/presets/crt-gone.svg
check 'gallery: docs/presets.md differs from drawn/presets.md
gallery: docs/presets/crt-gone.svg belongs to no preset'
