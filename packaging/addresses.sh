# shellcheck shell=sh
# Where the project is found, for the installers' entry in the list of programs and for the package managers'
# descriptions. These are placeholders in a domain that nobody can own; who publishes puts in what is true.

homepage=https://tarvex.example
help_page=$homepage/help
# The packages of a version are at $downloads/VERSION/FILE.
downloads=$homepage/releases
