#pragma once

namespace vorn {

// Installs the catalogues for the user's language, ours and Qt's own, in the application object.
// Without one for it the texts stay as they stand in the code.
void installTranslations();

} // namespace vorn
