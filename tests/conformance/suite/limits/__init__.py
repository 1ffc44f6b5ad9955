"""The limits: just below, at and just above each. Expected bytes are written by hand."""

from . import files, fonts, forms, frames, options, pages, records, sequences

CHECKS = (
    options.CHECKS + sequences.CHECKS + pages.CHECKS + forms.CHECKS + files.CHECKS
    + records.CHECKS + frames.CHECKS + fonts.CHECKS
)
