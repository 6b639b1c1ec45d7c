// Where the library finds the texts of its messages.
#pragma once

namespace tesselctl {

// Names the product folder to the library when the environment does not: the one the tool is installed in, or the one
// beside it in a build tree.
//
// Throws std::runtime_error when the user's language has catalogues of its own and one of them is missing: the
// library would wait for it without end. To be called before the first message is formatted.
void prepareCatalogue();

}  // namespace tesselctl
