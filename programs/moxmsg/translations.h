// SPDX-License-Identifier: Apache-2.0
/// @file
/// Translations as people exchange them: a template for their tools (PO), and what these
/// make of it (MO). A message's number is its context, so that texts that are equal in one
/// language may differ in another.
#pragma once

#include "messages.h"

#include <set>
#include <string>

/// The template for translators; messages of which it can hold no text become problems.
/// The same bytes for the same texts.
std::string translationTemplate(Messages& messages);

/// Whether @p bytes begin as an MO file does, of either byte order.
bool isTranslation(const std::string& bytes);

/// Adds the translations of an MO file, and what is wrong with it: each under its number,
/// with the text that it translates. Of a number with several texts, all. Entries whose
/// context is no number of a message are none of ours; what is empty is not translated.
void decodeTranslation(const std::string& bytes, Messages& messages);

/// Puts the translations of @p from into @p messages, where both have the number with the
/// same text. One that does not take the same printf arguments is a problem of @p from. A
/// number for which there are translations, but of other texts, is told in @p outdated.
void takeTranslations(Messages& messages, Messages& from, std::set<int>& outdated);
