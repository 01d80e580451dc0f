#include "DocumentReader.h"

namespace mapistore
{

void CDocumentReader::ReadAddressBook(const CPlace& place, CPropertyReader& reader)
{
    place.AllowKeys({"uid", "containers", "entries"});
    AddressBook& book = m_document->addressBook;
    ForEach(place, "containers", [&](const CPlace& at) {
        at.AllowKeys({"id", "parent", "properties"});
        Container container;
        container.id = ReadId(at, "id");
        container.parent = ReadParent(at);
        container.props = reader.ReadBag(CPlace(at, at.Need("properties")));
        book.containers.push_back(std::move(container));
    });
    CheckContainers(place);
    const auto check = [&](const CPlace& at, ObjectKind kind, const char* what) {
        const auto id = static_cast<std::uint64_t>(at.Whole(1, kMaxId));
        const auto known = m_ids.ids.find(id);
        if (known == m_ids.ids.end() || known->second.kind != kind)
        {
            at.Fail(what);
        }
        return id;
    };
    ForEach(place, "entries", [&](const CPlace& at) {
        at.AllowKeys({"id", "containers", "type", "members", "properties"});
        Entry entry;
        entry.id = ReadId(at, "id");
        const std::string type = at.TextOr("type", "mailUser");
        if (type != "mailUser" && type != "distList")
        {
            CPlace(at, at.Need("type")).Fail("expected \"mailUser\" or \"distList\"");
        }
        entry.isList = type == "distList";
        at.Need("containers");
        ForEach(at, "containers", [&](const CPlace& container) {
            entry.containers.push_back(
                check(container, ObjectKind::Container, "expected the identifier of a container"));
        });
        if (at.Node().Find("members") != nullptr && !entry.isList)
        {
            CPlace(at, at.Need("members")).FailAtKey("only a distribution list has members");
        }
        ForEach(at, "members", [&](const CPlace& member) {
            entry.members.push_back(
                check(member, ObjectKind::Entry, "expected the identifier of an entry"));
        });
        entry.props = reader.ReadBag(CPlace(at, at.Need("properties")));
        book.entries.push_back(std::move(entry));
    });
}

void CDocumentReader::CheckContainers(const CPlace& place) const
{
    const std::vector<Container>& containers = m_document->addressBook.containers;
    size_t index = 0;
    ForEach(place, "containers", [&](const CPlace& at) {
        std::uint64_t above = containers[index++].parent;
        for (size_t steps = 0; above != 0; ++steps)
        {
            const Container* parent = m_document->FindContainer(above);
            if (parent == nullptr || steps > containers.size())
            {
                CPlace(at, at.Need("parent"))
                    .Fail(parent == nullptr ? "there is no such container"
                                            : "the containers contain each other");
            }
            above = parent->parent;
        }
    });
}

} // namespace mapistore
