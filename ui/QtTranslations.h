#pragma once

// Installs Qt's own Japanese translations (qtbase_ja, Debian package
// qt6-translations-l10n) on the running application, whatever the locale:
// the save dialog, its questions and the standard buttons then speak the
// program's language. False, with nothing installed, when they are missing.
bool installQtTranslations();
