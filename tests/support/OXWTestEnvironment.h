#pragma once

// The private surroundings of a test program, entered by its main() before anything reads them:
// - HOME and the XDG configuration, data, cache and runtime folders point into a temporary
//   folder of the program's own, removed when it ends: settings (QSettings, the file dialog's
//   history), data and caches never reach the user's ~/.config, ~/.local or ~/.cache;
// - FONTCONFIG_FILE names tests/support/fonts.conf: only the fonts of fonts-dejavu-core;
// - LC_ALL is C.UTF-8 and LANGUAGE unset: numbers and texts do not follow the user's language.
// A program run by hand thus behaves as under ctest.
namespace oxwtest {

// False when the temporary folder cannot be made; the program must not run its tests then.
bool enterPrivateEnvironment();

} // namespace oxwtest
