#pragma once

#include <string>

namespace samples
{
/// One appointment as the server writes it, every element filled: month-first UTC times, escaped text
/// inside CDATA, plain text unescaped.
inline const std::string kFullAppointment =
    "<appointment><subKey>223655400</subKey><subject><![CDATA[A &amp; B &lt;now&gt;]]></subject>"
    "<location><![CDATA[Room 5]]></location><description><![CDATA[line 1\r\nline 2]]></description>"
    "<hostName><![CDATA[Ana Diaz]]></hostName><hostEmail><![CDATA[ana@example.org]]></hostEmail>"
    "<duration>90</duration><meetStatus>3</meetStatus><isRecurrent>TRUE</isRecurrent>"
    "<recurrentType>2</recurrentType><recurrentPattern>every week</recurrentPattern>"
    "<profile>R&D</profile><store>ana@example.org</store><isAllDayEvent>FALSE</isAllDayEvent>"
    "<responseStatus>3</responseStatus><busyStatus>2</busyStatus><tlvcOIEx><![CDATA[oi]]></"
    "tlvcOIEx>"
    "<desktoolsproperty><![CDATA[dt]]></desktoolsproperty>"
    "<UCCapabilities><![CDATA[uc]]></UCCapabilities><startTime>11/02/2026 14:30:00</startTime>"
    "<endTime>11/02/2026 16:00:00</endTime><firstTime>10/05/2026 13:30:05</firstTime>"
    "<recStateEntryID>01ABFF</recStateEntryID><recStateIDSize>3</recStateIDSize>"
    "<timeZoneEntryID>C4FF</timeZoneEntryID><timeZoneIDSize>2</timeZoneIDSize>"
    "<entryID>AA</entryID><entryIDSize>1</entryIDSize><instanceEntryID>BBCC</instanceEntryID>"
    "<instanceIDSize>2</instanceIDSize><storeEntryID>DD</storeEntryID><storeIDSize>1</storeIDSize>"
    "<UId>040000008200E000</UId><xaltdescription><![CDATA[&lt;p&gt;hi&lt;/p&gt;]]></"
    "xaltdescription>"
    "<attendees><attendee><name><![CDATA[Ana "
    "Diaz]]></name><email><![CDATA[ana@example.org]]></email>"
    "<attendType>3</attendType><recipType>1</recipType><responseType>0</responseType></attendee>"
    "<attendee><name><![CDATA[Li &amp; Co]]></name><email><![CDATA[li@example.org]]></email>"
    "<attendType>1</attendType><recipType>2</recipType><responseType>3</responseType></attendee>"
    "</attendees></appointment>";

/// An appointment of a record in which nothing is set.
inline const std::string kEmptyAppointment =
    "<appointment><subKey>0</subKey><subject><![CDATA[]]></subject><location><![CDATA[]]></"
    "location>"
    "<description><![CDATA[]]></description><hostName><![CDATA[]]></hostName>"
    "<hostEmail><![CDATA[]]></hostEmail><duration>0</duration><meetStatus>0</meetStatus>"
    "<isRecurrent>FALSE</isRecurrent><recurrentType>0</recurrentType>"
    "<recurrentPattern></recurrentPattern><profile></profile><store></store>"
    "<isAllDayEvent>FALSE</isAllDayEvent><responseStatus>0</responseStatus><busyStatus>0</"
    "busyStatus>"
    "<tlvcOIEx><![CDATA[]]></tlvcOIEx><desktoolsproperty><![CDATA[]]></desktoolsproperty>"
    "<UCCapabilities><![CDATA[]]></UCCapabilities><startTime>00/00/0000 00:00:00</startTime>"
    "<endTime>00/00/0000 00:00:00</endTime><firstTime>00/00/0000 00:00:00</firstTime>"
    "<recStateEntryID></recStateEntryID><recStateIDSize>0</recStateIDSize>"
    "<timeZoneEntryID></timeZoneEntryID><timeZoneIDSize>0</timeZoneIDSize><entryID></entryID>"
    "<entryIDSize>0</entryIDSize><instanceEntryID></instanceEntryID>"
    "<instanceIDSize>0</instanceIDSize><storeEntryID></storeEntryID><storeIDSize>0</storeIDSize>"
    "<UId></UId><xaltdescription><![CDATA[]]></xaltdescription><attendees></attendees></"
    "appointment>";

inline std::string Listing(const std::string& appointments)
{
    return "<appointments>" + appointments + "</appointments>";
}
} // namespace samples
