#ifndef ORVSDK_HOST_SCENE_ORVPROPERTY_H
#define ORVSDK_HOST_SCENE_ORVPROPERTY_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/scene/OrvCriteria.h"

#include <cstddef>
#include <vector>

namespace orvsdk {

class OrvObject;
class OrvAnimStack;
class OrvAnimLayer;
class OrvAnimCurveNode;

/// Type codes of property values. Only the double types hold values in this host.
enum EOrvType
{
    eOrvUndefined = 0,
    eOrvDouble = 12,   ///< one double
    eOrvDouble3 = 14   ///< three doubles (X, Y, Z)
};

/// A named, typed value of a host object, and the end point of connections: other objects
/// connect to a property as its sources. Every object has a root property (OrvObject::
/// RootProperty, type eOrvUndefined) through which object-to-object connections are made: the
/// sources of an object's root property are the objects connected to the object, and its
/// destinations are the objects the object is connected to.
///
/// A property lives inside its owner object for the owner's whole life; it cannot be copied.
/// Connections never own: the scene owns every object.
class ORVHOST_API OrvProperty
{
public:
    ///@{
    /// A property of pOwner (not null) named pName (copied pointer: a string literal) holding
    /// pType. A double property starts at pDefault[0], a double3 one at pDefault[0..2]; a null
    /// pDefault means zeros. pValid false makes the placeholder returned for an out-of-range
    /// lookup: it holds nothing, and Set, Get and GetCurveNode fail on it.
    OrvProperty(OrvObject* pOwner, const char* pName, EOrvType pType, const double* pDefault = nullptr,
                bool pValid = true);
    OrvProperty(const OrvProperty&) = delete;
    OrvProperty& operator=(const OrvProperty&) = delete;
    ///@}

    /// False only for the placeholder described above.
    bool IsValid() const { return mValid; }
    ///@{
    /// The name given at construction ("" for a root property), and the value type.
    const char* GetName() const { return mName; }
    EOrvType GetPropertyDataType() const { return mType; }
    ///@}
    /// The object this property belongs to.
    OrvObject* GetOwner() const { return mOwner; }
    /// True for the owner's RootProperty.
    bool IsRoot() const;

    ///@{
    /// Value access with a type code: eOrvDouble (12) reads or writes one double, eOrvDouble3
    /// (14) three. The code must be the property's own type; otherwise, or on an invalid
    /// property, or with a null pValue, false is returned and nothing changes. Set with
    /// pCheckValueEquality leaves an equal value untouched; the result is true either way.
    bool Set(const void* pValue, const EOrvType& pType, bool pCheckValueEquality = true);
    bool Get(void* pValue, const EOrvType& pType) const;
    ///@}

    /// The curve node animating this property in pStack's base layer (its first layer). A null
    /// stack means the scene's current stack. With pCreate, what is missing is created: the
    /// curve node (its channels start at the property's value), the stack's base layer, and,
    /// when the scene has no current stack, a stack named "Take 001" with a base layer, which
    /// becomes current. Without pCreate, null when any of them is missing. Null on an invalid
    /// property. Costs the number of sources of this property.
    OrvAnimCurveNode* GetCurveNode(OrvAnimStack* pStack, bool pCreate = false);
    /// The same in pLayer; a null layer means the current stack's base layer, as above.
    OrvAnimCurveNode* GetCurveNode(OrvAnimLayer* pLayer, bool pCreate = false);
    /// A literal null: the current stack's base layer, as above.
    OrvAnimCurveNode* GetCurveNode(std::nullptr_t, bool pCreate = false);

    ///@{
    /// Source objects (objects connected to this property), in connection order, filtered by
    /// pCriteria. GetSrcObject: the pIndex-th match, null when out of range. FindSrcObject: the
    /// first match named exactly pName (case-sensitive) at or after match index pStartIndex,
    /// null when there is none. Cost linear in the number of sources.
    int GetSrcObjectCount(const OrvCriteria& pCriteria) const;
    OrvObject* GetSrcObject(const OrvCriteria& pCriteria, int pIndex = 0) const;
    OrvObject* FindSrcObject(const OrvCriteria& pCriteria, const char* pName, int pStartIndex = 0) const;
    ///@}

    ///@{
    /// Destination objects: on the root property, the objects the owner is connected to (through
    /// their root properties), in connection order; a property other than the root is never the
    /// source of a connection, so it has none. Null when out of range.
    int GetDstObjectCount(const OrvCriteria& pCriteria) const;
    OrvObject* GetDstObject(const OrvCriteria& pCriteria, int pIndex = 0) const;
    ///@}

    ///@{
    /// Typed forms of the queries above, e.g. GetSrcObject<OrvAnimLayer>(0).
    template <typename T>
    int GetSrcObjectCount() const
    {
        return GetSrcObjectCount(OrvCriteria::ObjectType(T::ClassId));
    }
    template <typename T>
    T* GetSrcObject(int pIndex = 0) const
    {
        return static_cast<T*>(GetSrcObject(OrvCriteria::ObjectType(T::ClassId), pIndex));
    }
    template <typename T>
    T* FindSrcObject(const char* pName, int pStartIndex = 0) const
    {
        return static_cast<T*>(FindSrcObject(OrvCriteria::ObjectType(T::ClassId), pName, pStartIndex));
    }
    template <typename T>
    int GetDstObjectCount() const
    {
        return GetDstObjectCount(OrvCriteria::ObjectType(T::ClassId));
    }
    template <typename T>
    T* GetDstObject(int pIndex = 0) const
    {
        return static_cast<T*>(GetDstObject(OrvCriteria::ObjectType(T::ClassId), pIndex));
    }
    ///@}

private:
    friend class OrvObject;

    OrvAnimCurveNode* FindCurveNode(const OrvAnimLayer& pLayer) const;
    OrvAnimCurveNode* CreateCurveNode(OrvAnimLayer& pLayer);

    OrvObject* mOwner;
    const char* mName;
    EOrvType mType;
    bool mValid;
    double mValue[3] = {0.0, 0.0, 0.0};
    std::vector<OrvObject*> mSrcObjects;  // connected objects, not owned
};

} // namespace orvsdk

#endif
