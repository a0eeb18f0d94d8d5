#pragma once

#include "attestation/document/PdfContent.h"
#include "attestation/document/PdfFile.h"
#include "attestation/page/AttestationPage.h"

#include <optional>
#include <vector>

/// The structure of a document, for readers that cannot see it: the logo as a figure with its scheme's name, the texts
/// as paragraphs and the title as a heading, both tables with their headers and cells, in reading order. The marks are
/// those of the sheet's content. Nothing when a mark has no place in the structure.
[[nodiscard]] std::optional<PdfReference> addStructureTree(PdfFile& file, const AttestationPage& page,
                                                           const std::vector<ContentMark>& marks, PdfReference sheet);
