#pragma once
// Escaping of texts put into the service's XML replies and data files.

#include <string>

namespace marrowfin::service {

// & < > and " become references; everything else stays as it is.
std::string XmlEscape(const std::string& text);

}  // namespace marrowfin::service
