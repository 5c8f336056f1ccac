#!/bin/sh
# scripts/gallery draws the same again, and its check names whatever is another. In a copy, with a preview
# that knows of one preset.
set -eu

rm -rf "$WORK_DIR"
mkdir -p "$WORK_DIR/scripts" "$WORK_DIR/docs" "$WORK_DIR/tests/manifest/golden"
cd "$WORK_DIR"
cp "$SOURCE_DIR/scripts/gallery" scripts
cp "$SOURCE_DIR/tests/manifest/golden/RenderGraphManifest.h" tests/manifest/golden
cat >preview <<END
#!/bin/sh
[ "\$1" = list ] && { printf 'presets:\n  gba-lcd\ntest pictures:\n  none\n'; exit; }
exec "$PREVIEW" "\$@" \${SET-}
END
chmod +x preview
export RENDER_GRAPH_PREVIEW="$WORK_DIR/preview" GALLERY_DIR="$WORK_DIR/drawn"

fail() {
    echo "FAILED: $*" >&2
    cat log >&2
    exit 1
}

scripts/gallery >log 2>&1 || fail 'drawing'
[ "$(ls docs docs/presets)" = 'docs:
presets
presets.md

docs/presets:
all.jpg
gba-lcd-detail.jpg
gba-lcd.jpg
gba-lcd.svg' ] || fail "$(ls docs docs/presets)"
# shellcheck disable=SC2016 # no command, but Markdown
grep -qFx '| `ghost_rise` | **0.706** | 0.5 | 0.05 to 1 | 0.05 | LCD Response Rise (drive) |' docs/presets.md ||
    fail 'a row of the parameters'
cp -R docs before
scripts/gallery >log 2>&1 || fail 'drawing again'
diff -r before docs >log || fail 'another gallery each time'
scripts/gallery --check >log 2>&1 || fail 'checking what was drawn'

# check <what it has to say> [preset]
check() {
    scripts/gallery --check ${2+"$2"} >log 2>&1 && fail 'the check passes'
    sed -i -e '/^gallery: drawing/d' -e 's/ by [0-9.]* levels.*/./' -e "s|$WORK_DIR/||g" log
    [ "$(cat log)" = "$1
gallery: if that is meant: run scripts/gallery, and commit what it writes" ] || fail 'another message'
}

# One step of one slider.
SET='--set lcd_grid_contrast=0.45' check 'gallery: docs/presets/all.jpg differs from what is drawn now.
gallery: docs/presets/gba-lcd-detail.jpg differs from what is drawn now.
gallery: docs/presets/gba-lcd.jpg differs from what is drawn now.
gallery: docs/presets/gba-lcd.svg is another graph than drawn/presets/gba-lcd.svg'
[ "$(pngtopam drawn/gba-lcd-detail-difference.png | pamfile -machine | sed 's,.*: ,,')" = 'PPM RAW 1200 300 3 255 RGB' ] ||
    fail 'no difference picture of three times 400x300'

jpegtopnm -quiet docs/presets/gba-lcd.jpg | pamcut -width 99 | pnmtojpeg >cut.jpg
mv cut.jpg docs/presets/gba-lcd.jpg
rm docs/presets/gba-lcd-detail.jpg
check 'gallery: there is no docs/presets/gba-lcd-detail.jpg
gallery: docs/presets/gba-lcd.jpg has another size than drawn/presets/gba-lcd.jpg' gba-lcd

rm -r docs
cp -R before docs
echo >>docs/presets.md
touch docs/presets/crt-gone.svg
check 'gallery: docs/presets.md is not drawn/presets.md
gallery: docs/presets/crt-gone.svg is of no preset'
