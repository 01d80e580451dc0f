#pragma once

#include "Object.h"
#include "StoreFolder.h"

namespace mapistore
{

/// The eleven operations of IMAPIProp, in terms of a few that each kind of object answers.
class CPropCore : public CObjectCore
{
protected:
    /// `firstProp` is the GetLastError of the interface; its IMAPIProp operations follow it in
    /// operations.txt in the order of the interface.
    CPropCore(const char* interfaceName,
              Operation firstProp,
              Operation madeBy,
              std::shared_ptr<CStoreFolder> folder,
              Lifeline life)
        : CObjectCore(interfaceName, madeBy, std::move(life)), m_folder(std::move(folder)),
          m_firstProp(firstProp)
    {
    }

    // What an object answers. The store folder's lock is held.
    virtual const CValue* FindValue(ULONG id, CValue& scratch) = 0;
    virtual void AddTags(std::vector<ULONG>& tags) = 0;
    /// Takes the changes of one SetProps or DeleteProps call.
    virtual void Change(const PropertyChange& change);
    virtual bool Writable() const { return false; }
    virtual HRESULT Save(ULONG flags);
    /// Serves PT_OBJECT properties. Throws MAPI_E_NOT_FOUND for another.
    virtual IUnknown* OpenObject(ULONG tag, const IID& iid, ULONG interfaceFlags, ULONG flags);
    /// Whether `id` may be changed at all; S_OK, or the status of the problem.
    virtual SCODE ProblemOf(ULONG id) const;
    /// What a copy has besides properties. `isExcluded` tells of subobjects by tag.
    virtual void CopyParts(IUnknown* target, const std::vector<ULONG>& excluded);
    /// Where the text of a stream that was written goes. Null: the object takes no streams.
    virtual std::function<void(CValue)> StreamTarget() { return nullptr; }

    HRESULT CoreLastError(HRESULT hr, ULONG flags, MAPIERROR** error) noexcept;
    HRESULT CoreSaveChanges(ULONG flags) noexcept;
    HRESULT CoreGetProps(SPropTagArray* tags,
                         ULONG flags,
                         ULONG* count,
                         SPropValue** values) noexcept;
    HRESULT CoreGetPropList(ULONG flags, SPropTagArray** tags) noexcept;
    HRESULT CoreOpenProperty(
        ULONG tag, const IID* iid, ULONG interfaceFlags, ULONG flags, IUnknown** out) noexcept;
    HRESULT
    CoreSetProps(ULONG count, SPropValue* values, SPropProblemArray** problems) noexcept;
    HRESULT CoreDeleteProps(SPropTagArray* tags, SPropProblemArray** problems) noexcept;
    HRESULT CoreCopyTo(ULONG ciidExclude,
                       const IID* iidExclude,
                       SPropTagArray* exclude,
                       const IID* iid,
                       void* target,
                       ULONG flags,
                       SPropProblemArray** problems) noexcept;
    HRESULT CoreCopyProps(SPropTagArray* include,
                          const IID* iid,
                          void* target,
                          ULONG flags,
                          SPropProblemArray** problems) noexcept;
    HRESULT CoreNamesFromIds(
        SPropTagArray** tags, GUID* set, ULONG flags, ULONG* count, MAPINAMEID*** names) noexcept;
    HRESULT CoreIdsFromNames(ULONG count,
                             MAPINAMEID** names,
                             ULONG flags,
                             SPropTagArray** tags) noexcept;

    Operation PropOp(int method) const { return static_cast<Operation>(m_firstProp + method); }
    const std::shared_ptr<CStoreFolder>& Files() const { return m_folder; }
    void DropFolder() noexcept { m_folder.reset(); }

private:
    std::vector<ULONG> TagsOf(SPropTagArray* tags, bool unicode);
    SCODE CheckedProblem(const SPropValue& value) const;
    IUnknown* OpenStream(ULONG tag, ULONG flags, Operation operation);
    HRESULT CopyTags(Operation operation,
                     const std::vector<ULONG>& tags,
                     const IID* iid,
                     void* target,
                     ULONG flags,
                     SPropProblemArray** problems);

    std::shared_ptr<CStoreFolder> m_folder;
    Operation m_firstProp;
};

/// Order of the IMAPIProp operations.
enum PropMethod
{
    kGetLastError,
    kSaveChanges,
    kGetProps,
    kGetPropList,
    kOpenProperty,
    kSetProps,
    kDeleteProps,
    kCopyTo,
    kCopyProps,
    kGetNamesFromIDs,
    kGetIDsFromNames
};

/// An object with IMAPIProp and an interface above it.
template <class Interface>
class CPropObject : public Interface, public CPropCore
{
public:
    HRESULT WINAPI QueryInterface(REFIID iid, void** out) override
    {
        if (out == nullptr)
        {
            return MAPI_E_INVALID_PARAMETER;
        }
        *out = nullptr;
        if (!Alive())
        {
            return RefuseQuery();
        }
        if (!Supports(iid))
        {
            return MAPI_E_INTERFACE_NOT_SUPPORTED;
        }
        CoreAddRef();
        *out = static_cast<Interface*>(this);
        return S_OK;
    }
    ULONG WINAPI AddRef() override { return CoreAddRef(); }
    ULONG WINAPI Release() override { return CoreRelease(); }
    virtual bool Supports(REFIID iid) const = 0;

    HRESULT WINAPI GetLastError(HRESULT hr, ULONG flags, MAPIERROR** error) override
    {
        return CoreLastError(hr, flags, error);
    }
    HRESULT WINAPI SaveChanges(ULONG flags) override { return CoreSaveChanges(flags); }
    HRESULT WINAPI GetProps(SPropTagArray* tags,
                            ULONG flags,
                            ULONG* count,
                            SPropValue** values) override
    {
        return CoreGetProps(tags, flags, count, values);
    }
    HRESULT WINAPI GetPropList(ULONG flags, SPropTagArray** tags) override
    {
        return CoreGetPropList(flags, tags);
    }
    HRESULT WINAPI OpenProperty(
        ULONG tag, const IID* iid, ULONG interfaceFlags, ULONG flags, IUnknown** out) override
    {
        return CoreOpenProperty(tag, iid, interfaceFlags, flags, out);
    }
    HRESULT WINAPI SetProps(ULONG count, SPropValue* values, SPropProblemArray** problems) override
    {
        return CoreSetProps(count, values, problems);
    }
    HRESULT WINAPI DeleteProps(SPropTagArray* tags, SPropProblemArray** problems) override
    {
        return CoreDeleteProps(tags, problems);
    }
    HRESULT WINAPI CopyTo(ULONG ciidExclude,
                          const IID* iidExclude,
                          SPropTagArray* exclude,
                          ULONG,
                          IMAPIProgress*,
                          const IID* iid,
                          void* target,
                          ULONG flags,
                          SPropProblemArray** problems) override
    {
        return CoreCopyTo(ciidExclude, iidExclude, exclude, iid, target, flags, problems);
    }
    HRESULT WINAPI CopyProps(SPropTagArray* include,
                             ULONG,
                             IMAPIProgress*,
                             const IID* iid,
                             void* target,
                             ULONG flags,
                             SPropProblemArray** problems) override
    {
        return CoreCopyProps(include, iid, target, flags, problems);
    }
    HRESULT WINAPI GetNamesFromIDs(
        SPropTagArray** tags, GUID* set, ULONG flags, ULONG* count, MAPINAMEID*** names) override
    {
        return CoreNamesFromIds(tags, set, flags, count, names);
    }
    HRESULT WINAPI GetIDsFromNames(ULONG count,
                                   MAPINAMEID** names,
                                   ULONG flags,
                                   SPropTagArray** tags) override
    {
        return CoreIdsFromNames(count, names, flags, tags);
    }

protected:
    using CPropCore::CPropCore;
};

/// An object whose properties never change while it is open.
template <class Interface>
class CBagObject : public CPropObject<Interface>
{
protected:
    template <class... Args>
    explicit CBagObject(CPropertyBag bag, Args&&... args)
        : CPropObject<Interface>(std::forward<Args>(args)...), m_bag(std::move(bag))
    {
    }
    const CValue* FindValue(ULONG id, CValue&) override { return m_bag.Find(id); }
    void AddTags(std::vector<ULONG>& tags) override
    {
        for (const CValue& value : m_bag)
        {
            tags.push_back(value.Tag());
        }
    }
    void Dispose() noexcept override
    {
        m_bag.Clear();
        this->DropFolder();
    }
    const CPropertyBag& Bag() const { return m_bag; }

private:
    CPropertyBag m_bag;
};

/// "0x0037001F": the form of a tag among the subjects of a fault plan.
std::string TagText(ULONG tag);

} // namespace mapistore
