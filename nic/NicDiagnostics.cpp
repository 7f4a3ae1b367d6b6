// `network nic eeprom dump|change`, `nic register dump`, `nic selftest run` and
// `nic negotiate restart`: the NIC's device, reached through the host.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/Misc.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "nic/NicQueueCommon.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;

constexpr char kOffset[] = "Offset";
constexpr char kValue[] = "Value";
constexpr char kItem[] = "Item";
constexpr Field kEepromFields[] = {
    {kOffset, FieldType::String, 1},
    {kValue, FieldType::String, 2},
};
constexpr Declare::StructShape kEepromStruct = {"EepromDump", kEepromFields};
constexpr Declare::StructShape kRegisterStruct = {"RegisterDump", kEepromFields};
constexpr Field kSelfTestFields[] = {
    {kItem, FieldType::String, 1},
    {kValue, FieldType::String, 2},
};
constexpr Declare::StructShape kSelfTestStruct = {"EepromDump", kSelfTestFields};

constexpr char kOffsetParameter[] = "offset";
constexpr char kLengthParameter[] = "length";
constexpr char kValueParameter[] = "value";
constexpr char kFileParameter[] = "file";
constexpr char kMagicParameter[] = "magic";
constexpr char kOnlineParameter[] = "online";
constexpr char kDumpEepromDescription[] = "The name of pnic to dump EEPROM";

constexpr Declare::Parameter kEepromDumpParameters[] = {
    {kHwnicParameter, "n", Declare::Type::String, true, kDumpEepromDescription},
    {kOffsetParameter, "o", Declare::Type::Int, false, "Offset of EEPROM starting to dump"},
    {kLengthParameter, "l", Declare::Type::Int, false, "Bytes of EEPROM to dump"},
};
constexpr Declare::Parameter kEepromChangeParameters[] = {
    {kHwnicParameter, "n", Declare::Type::String, true, "Name of hwnic to change EEPROM."},
    {kOffsetParameter, "o", Declare::Type::Int, false, "Offset of EEPROM to change"},
    {kValueParameter, "v", Declare::Type::Int, false, "New EEPROM value in double word"},
    {kFileParameter, "f", Declare::Type::String, false, "File name of new EEPROM content"},
    {kMagicParameter, "m", Declare::Type::Int, true, "Magic key of EEPROM"},
};
constexpr Declare::Parameter kRegisterDumpParameters[] = {
    {kHwnicParameter, "n", Declare::Type::String, true, "The name of pnic to dump registers"},
};
constexpr Declare::Parameter kSelfTestParameters[] = {
    {kHwnicParameter, "n", Declare::Type::String, true, kDumpEepromDescription},
    {.name = kOnlineParameter,
     .shortName = "o",
     .type = Declare::Type::Int,
     .required = false,
     .description = "Performing limited set of tests do not inetrrupt normal adapter operation, "
                    "default is offline",
     .range = true,
     .low = 0,
     .high = 1},
};
constexpr Declare::Parameter kNegotiateParameters[] = {
    {kHwnicParameter, "n", Declare::Type::String, true, "Name of hwnic to restart negotiation"},
};

constexpr char kFileWithOffset[] =
    "Parameter --file can't be specified together with --offset and --value";
constexpr char kNeedOne[] = "Need to specify atleast one of --offset, --value or --file";
constexpr char kResult[] = "Result";
constexpr char kFailed[] = "Failed";
constexpr char kPassed[] = "Passed";
constexpr char kInfo[] = "Info";
constexpr char kRowAddress[] = "%04x";
constexpr unsigned kColumns = 16;

// The named NIC, or null after adding "Pnic with name <name> not found".
std::unique_ptr<HostCtl::Network::Pnic> DiagnosedPnic(const Input& input, Output& output) {
    const std::string& name = input.GetParameter(kHwnicParameter);
    KelmCtl::Network::NetworkInfoImpl networkInfo;
    auto pnic = networkInfo.GetPnicByName(name, false);
    if (!pnic) {
        output.AddErrorMessage(PnicNotFound(name));
    }
    return pnic;
}

// Rows of sixteen columns aligned to the EEPROM's addresses: the first row starts with three
// blanks for each column ahead of `offset`; every byte is two digits and a blank.
std::shared_ptr<MetaList> DumpBinary(unsigned int offset, std::vector<unsigned char>& data) {
    auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct,
                              Declare::MakeStruct(Declare::PackStruct<kEepromStruct>()));
    unsigned column = offset & 0xfu;
    unsigned address = offset & ~0xfu;
    std::size_t next = 0;
    do {
        std::string text(column * 3, ' ');
        for (; next < data.size() && column < kColumns; ++column, ++next) {
            text += HostCtl::Misc::StrPrintf("%02x ", data[next]);
        }
        auto row = Declare::MakeStruct(Declare::PackStruct<kEepromStruct>());
        row->SetField(kValue, std::move(text));
        row->SetField(kOffset, HostCtl::Misc::StrPrintf(kRowAddress, address));
        list->Add(row);
        address += kColumns;
        column = 0;
    } while (next < data.size());
    return list;
}

}  // namespace

constexpr Declare::CommandShape kNicEepromDumpShape = {
    .description = "Dump device EEPROM",
    .formatter = "table",
    .parameters = kEepromDumpParameters,
    .root = Declare::Root::List,
    .structure = &kEepromStruct,
};

constexpr Declare::CommandShape kNicEepromChangeShape = {
    .description = "Change EEPROM on a nic",
    .parameters = kEepromChangeParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kNicRegisterDumpShape = {
    .description = "Dump device registers",
    .formatter = "table",
    .parameters = kRegisterDumpParameters,
    .root = Declare::Root::List,
    .structure = &kRegisterStruct,
};

constexpr Declare::CommandShape kNicSelfTestRunShape = {
    .description = "Run self test",
    .formatter = "table",
    .parameters = kSelfTestParameters,
    .root = Declare::Root::List,
    .structure = &kSelfTestStruct,
};

constexpr Declare::CommandShape kNicNegotiationRestartShape = {
    .description = "Restart N-Way negotiation on a nic",
    .parameters = kNegotiateParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(NicEepromDump, kNicEepromDumpShape) {
    try {
        auto pnic = DiagnosedPnic(*input, *output);
        if (!pnic) {
            return;
        }
        const auto offset = static_cast<std::uint32_t>(
            input->HasParameter(kOffsetParameter) ? input->GetParameterInt(kOffsetParameter) : 0);
        const auto length = static_cast<std::uint32_t>(
            input->HasParameter(kLengthParameter) ? input->GetParameterInt(kLengthParameter) : 0);
        std::vector<unsigned char> data;
        pnic->GetEeprom(data, length, offset);
        output->SetRootObject(DumpBinary(offset, data));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

// The file is the host's to read; the command only passes its name on.
NETWORK_COMMAND(NicEepromChange, kNicEepromChangeShape) {
    try {
        auto pnic = DiagnosedPnic(*input, *output);
        if (!pnic) {
            return;
        }
        const auto magic = static_cast<std::uint32_t>(input->GetParameterInt(kMagicParameter));
        const bool hasOffset = input->HasParameter(kOffsetParameter);
        const bool hasValue = input->HasParameter(kValueParameter);
        if (input->HasParameter(kFileParameter)) {
            if (hasOffset || hasValue) {
                throw HostCtl::Lib::HostCtlException(kFileWithOffset);
            }
            pnic->SetEepromFromFile(magic, input->GetParameter(kFileParameter));
        } else {
            if (!hasOffset || !hasValue) {
                throw HostCtl::Lib::HostCtlException(kNeedOne);
            }
            const auto offset =
                static_cast<std::uint32_t>(input->GetParameterInt(kOffsetParameter));
            const auto value = static_cast<std::uint32_t>(input->GetParameterInt(kValueParameter));
            pnic->SetEeprom(magic, offset, value);
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

// Sixteen words a row, each as at least two hexadecimal digits and a blank.
NETWORK_COMMAND(NicRegisterDump, kNicRegisterDumpShape) {
    try {
        auto pnic = DiagnosedPnic(*input, *output);
        if (!pnic) {
            return;
        }
        std::vector<std::uint32_t> registers;
        pnic->DumpRegisters(registers);
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        for (std::size_t start = 0; start < registers.size(); start += kColumns) {
            std::string text;
            for (std::size_t i = start; i < registers.size() && i < start + kColumns; ++i) {
                text += HostCtl::Misc::StrPrintf("%02x ", registers[i]);
            }
            auto row = GetOutputStructure();
            row->SetField(kValue, std::move(text));
            row->SetField(kOffset,
                          HostCtl::Misc::StrPrintf(kRowAddress, static_cast<unsigned>(start)));
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicSelfTestRun, kNicSelfTestRunShape) {
    try {
        auto pnic = DiagnosedPnic(*input, *output);
        if (!pnic) {
            return;
        }
        const bool online =
            input->HasParameter(kOnlineParameter) && input->GetParameterInt(kOnlineParameter) != 0;
        HostCtl::Network::PnicSelfTestResult result;
        pnic->RunSelfTest(result, online);
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        auto first = GetOutputStructure();
        first->SetField(kItem, kResult);
        first->SetField(kValue, result.failed ? kFailed : kPassed);
        list->Add(first);
        for (const std::string& line : result.info) {
            auto row = GetOutputStructure();
            row->SetField(kItem, kInfo);
            row->SetField(kValue, line);
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicNegotiationRestart, kNicNegotiationRestartShape) {
    try {
        auto pnic = DiagnosedPnic(*input, *output);
        if (!pnic) {
            return;
        }
        pnic->RestartNegotiation();
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
