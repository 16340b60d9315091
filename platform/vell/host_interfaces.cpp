#include "vell/i_command_line_parser.hpp"
#include "vell/i_editor_manager.hpp"

// Out of line, so that the tables and type information of the interfaces stand in this library alone.

vell::ICommandLineParser::~ICommandLineParser() = default;
IEditor::~IEditor() = default;
IEditorManager::~IEditorManager() = default;
