#!/usr/bin/env bash
# Handler of a test desktop: what xdg-open hands a file or a folder to. Writes
# each argument on a line of $E2E_OPENED.
for argument in "$@"; do printf '%s\n' "$argument" >>"${E2E_OPENED:?}"; done
