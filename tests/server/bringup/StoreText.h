#pragma once

/// The document of the store that the bring-up tests log on to: two calendars below each other, one
/// below a mail folder, a hidden one and one that cannot be watched; two contact folders; address
/// book containers inside containers.
inline constexpr const char* kStoreDocument = R"json({
  "format": "mapistore",
  "version": 1,
  "revision": 1,
  "nextId": 100,
  "namedIds": {
    "PSETID_Appointment:0x820D": "0x8100",
    "PSETID_Appointment:0x820E": "0x8101",
    "PSETID_Appointment:0x8235": "0x8102",
    "PSETID_Appointment:0x8236": "0x8103",
    "PSETID_Appointment:0x8223": "0x8104"
  },
  "profiles": [
    { "name": "Other", "stores": [1], "identity": 40 },
    { "name": "Demo", "default": true, "identity": 40, "stores": [2, 1] }
  ],
  "stores": [
    {
      "id": 1, "name": "Mailbox - Ada", "uid": "5D1F6A0B93C84E27A1B0C2D3E4F50617", "default": true,
      "folders": [
        { "id": 3, "parent": null, "name": "", "role": "root" },
        { "id": 4, "parent": 3, "name": "Top", "role": "ipmSubtree" },
        { "id": 5, "parent": 4, "name": "Inbox", "class": "IPF.Note", "role": "inbox" },
        { "id": 6, "parent": 5, "name": "Lost", "class": "IPF.Appointment" },
        { "id": 7, "parent": 4, "name": "Outbox", "class": "IPF.Note", "role": "outbox" },
        { "id": 8, "parent": 4, "name": "Sent Items", "class": "IPF.Note", "role": "sentItems" },
        { "id": 9, "parent": 4, "name": "Calendar", "class": "IPF.Appointment", "role": "calendar" },
        { "id": 10, "parent": 9, "name": "Team", "class": "IPM.Appointment" },
        { "id": 11, "parent": 4, "name": "Secret", "class": "IPF.Appointment", "hidden": true },
        { "id": 12, "parent": 4, "name": "Mute", "class": "IPF.Appointment", "advise": false },
        { "id": 13, "parent": 4, "name": "Contacts", "class": "IPF.Contact", "role": "contacts" },
        { "id": 14, "parent": 13, "name": "Friends", "class": "IPF.Contact" }
      ],
      "messages": [
        { "id": 20, "folder": 9, "class": "IPM.Appointment",
          "properties": { "PR_SUBJECT_W": "Review",
            "PidLidAppointmentStartWhole": "2026-11-02T09:00:00Z",
            "PidLidAppointmentEndWhole": "2026-11-02T10:00:00Z",
            "PidLidRecurring": false } }
      ]
    },
    {
      "id": 2, "name": "Archive", "uid": "5D1F6A0B93C84E27A1B0C2D3E4F50618", "personal": true,
      "folders": [ { "id": 15, "parent": null, "name": "", "role": "root" } ],
      "messages": []
    }
  ],
  "addressBook": {
    "uid": "AD0F6A0B93C84E27A1B0C2D3E4F50619",
    "containers": [
      { "id": 30, "parent": null,
        "properties": { "PR_DISPLAY_NAME_W": "Global", "PR_DISPLAY_TYPE": 131072 } },
      { "id": 31, "parent": 30, "properties": { "PR_DISPLAY_NAME_W": "Department" } },
      { "id": 32, "parent": null,
        "properties": { "PR_DISPLAY_NAME_W": "Left out", "PR_CONTAINER_FLAGS": 256 } }
    ],
    "entries": [
      { "id": 40, "containers": [30],
        "properties": { "PR_DISPLAY_NAME_W": "Ada Quist", "PR_GIVEN_NAME_W": "Ada",
          "PR_SURNAME_W": "Quist", "PR_ADDRTYPE_W": "EX", "PR_ACCOUNT_W": "ada",
          "PR_EMAIL_ADDRESS_W": "/o=Nordlys/cn=ada", "PR_SMTP_ADDRESS_W": "ada.quist@nordlys.example" } },
      { "id": 41, "containers": [30, 31],
        "properties": { "PR_DISPLAY_NAME_W": "Bo Lind", "PR_ADDRTYPE_W": "SMTP",
          "PR_EMAIL_ADDRESS_W": "bo.lind@nordlys.example" } },
      { "id": 42, "containers": [30], "type": "distList",
        "properties": { "PR_DISPLAY_NAME_W": "Bo's team", "PR_ADDRTYPE_W": "EX",
          "PR_EMAIL_ADDRESS_W": "/o=Nordlys/cn=team" } }
    ]
  }
})json";
