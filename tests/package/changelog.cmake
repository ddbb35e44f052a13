# SPDX-License-Identifier: Apache-2.0
# The newest section of the changelog is about the version that the project has, and has a date.
file(STRINGS "${CHANGELOG}" sections REGEX "^## ")
list(GET sections 0 newest)
string(REPLACE "." "\\." pattern "${VERSION}")
if(NOT newest MATCHES "^## ${pattern} - 20[0-9][0-9]-[01][0-9]-[0-3][0-9]$")
  message(FATAL_ERROR "the changelog begins with '${newest}', the project's version is ${VERSION}")
endif()
