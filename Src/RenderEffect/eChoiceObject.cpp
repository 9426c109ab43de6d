#include "eChoiceObject.h"

namespace KYR
{

eChoiceObject::eChoiceObject() : index(-1) {}

eChoiceObject::eChoiceObject(int slot, eScatterPoint const& p) : index(slot), point(p) {}

} // namespace KYR
