// Every public header of the library.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <vum-qib-osl/misc/osl_init.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/misc/versions.h>

#include <vum-qib-osl/log/channel.h>
#include <vum-qib-osl/log/log.h>
#include <vum-qib-osl/log/log_msg.h>
#include <vum-qib-osl/log/channel_debug.h>
#include <vum-qib-osl/log/channel_file.h>
#include <vum-qib-osl/log/channel_snmp.h>
#include <vum-qib-osl/log/channel_syslog.h>

#include <vum-qib-osl/misc/dloadlib.h>
#include <vum-qib-osl/misc/install_dir.h>
#include <vum-qib-osl/misc/wenv.h>
#include <vum-qib-osl/ini/general_configuration.h>

#include <vum-qib-osl/strings/unicode_configuration.h>
#include <vum-qib-osl/strings/unicode_converter.h>
#include <vum-qib-osl/strings/utf8_string.h>

#include <vum-qib-osl/message/format_string.h>
#include <vum-qib-osl/message/map_file.h>
#include <vum-qib-osl/message/message.h>

#include <vum-qib-osl/cmdline/cmd_line.h>
#include <vum-qib-osl/cmdline/qib_command_line.h>
#include <vum-qib-osl/strings/auto_edit_string.h>
#include <vum-qib-osl/strings/regular_expression.h>
#include <vum-qib-osl/strings/wildcard_string.h>
#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/ini/qib_backup_ini.h>
#include <vum-qib-osl/ini/qib_fds_ini.h>
#include <vum-qib-osl/ini/http_file.h>
#include <vum-qib-osl/ini/remote_ini.h>

#include <vum-qib-osl/file/find_file.h>
#include <vum-qib-osl/file/osl_directory.h>
#include <vum-qib-osl/file/osl_file.h>
#include <vum-qib-osl/file/osl_file_system.h>
#include <vum-qib-osl/file/osl_fstream.h>
#include <vum-qib-osl/file/osl_io_status.h>
#include <vum-qib-osl/file/unicode_signature.h>
