// SPDX-License-Identifier: Apache-2.0
// A word that is among the candidates has no near ones. What is proposed to the user may come
// from files, and is shown as printable text.
#include "tools/formats/nearwords.h"

#include "tools/formats/detail/NearWords.h"
#include "tools/formats/encode.h"

#include <string>
#include <vector>

namespace {

std::vector<std::string> nearestOf(const char* word, const KazStringColl& candidates) {
    if (word == nullptr || candidates.find(word) >= 0)
        return {};
    std::vector<std::string> words;
    for (int i = 0; i < candidates.getSize(); ++i)
        words.emplace_back(candidates[i].getValue());
    return kaz::detail::nearWords(word, words);
}

} // namespace

/// The words are found before the result is emptied: both collections may be the same one.
void kazNearWords(const char* word, const KazStringColl& candidates, KazStringColl& nearest) {
    nearest.removeAll();
    for (const std::string& near : nearestOf(word, candidates))
        nearest.add(near.c_str());
}

KazString kazDidYouMean(const char* word, const KazStringColl& candidates) {
    std::vector<std::string> words = nearestOf(word, candidates);
    for (std::string& near : words)
        near = kazPrintable(near.c_str()).getValue();
    return kaz::detail::hintOf(words).c_str();
}
