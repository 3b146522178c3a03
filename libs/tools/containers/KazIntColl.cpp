#include "tools/containers/KazIntColl.h"

#include <algorithm>
#include <vector>

void KazIntColl::insertAt(int index, const int* values, int count) {
    std::vector<void*> items(static_cast<std::size_t>(std::max(count, 0)));
    std::transform(values, values + items.size(), items.begin(), toItem);
    KazColl::insertAt(index, items.data(), count);
}
