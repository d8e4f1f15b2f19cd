#ifndef ORVSDK_SKELETON_ORVASFDOF_H
#define ORVSDK_SKELETON_ORVASFDOF_H

namespace orvsdk {

/// Degree-of-freedom codes: the index of each DOF word in the ASF reader's keyword table. A bone
/// keeps them as plain ints in its mDof list and indexes its limits by them, so the enumerators
/// convert to int implicitly. Axes are numbered 0 X, 1 Y, 2 Z.
enum EOrvAsfDof : int
{
    eOrvDofTx = 0,
    eOrvDofTy = 1,
    eOrvDofTz = 2,
    eOrvDofRz = 3,
    eOrvDofRy = 4,
    eOrvDofRx = 5,
};

/// True for the translation codes tx, ty, tz; false for any other int.
constexpr bool IsTranslationDof(int pCode)
{
    return pCode >= eOrvDofTx && pCode <= eOrvDofTz;
}

/// True for the rotation codes rz, ry, rx; false for any other int.
constexpr bool IsRotationDof(int pCode)
{
    return pCode >= eOrvDofRz && pCode <= eOrvDofRx;
}

/// True for every code a bone may hold (translations and rotations); false for any other int.
constexpr bool IsStoredDof(int pCode)
{
    return IsTranslationDof(pCode) || IsRotationDof(pCode);
}

/// The axis (0 X, 1 Y, 2 Z) that a translation or rotation code moves along or turns about.
/// pCode must satisfy IsStoredDof.
constexpr int DofAxis(int pCode)
{
    return IsTranslationDof(pCode) ? pCode - eOrvDofTx : eOrvDofRx - pCode;
}

/// The translation code along pAxis (0 X, 1 Y, 2 Z); pAxis must lie in 0..2.
constexpr EOrvAsfDof TranslationDofOnAxis(int pAxis)
{
    return static_cast<EOrvAsfDof>(eOrvDofTx + pAxis);
}

/// The rotation code about pAxis (0 X, 1 Y, 2 Z); pAxis must lie in 0..2.
constexpr EOrvAsfDof RotationDofOnAxis(int pAxis)
{
    return static_cast<EOrvAsfDof>(eOrvDofRx - pAxis);
}

/// TranslationDofOnAxis or RotationDofOnAxis, for code that handles the three axes of either kind.
using OrvAsfDofOnAxis = EOrvAsfDof (*)(int pAxis);

} // namespace orvsdk

#endif
