<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name>FObject</name>
    <message>
        <source>!FConfigurationGenInt</source>
        <translation>The values with which one computation runs: an expression for each entry of the definition.</translation>
    </message>
    <message>
        <source>!FConfigurationGenInt.attribute.setDefinition(FDefinitionGenInt,definition)</source>
        <translation>Sets the definition whose entries the configuration gives values to. Values that waited for it are applied.</translation>
    </message>
    <message>
        <source>!FConfigurationGenInt.attribute.setDefinition(FDefinitionGenInt,definition):argument0</source>
        <translation>the definition</translation>
    </message>
    <message>
        <source>!FConfigurationGenInt.attribute.setDefinition(FDefinitionGenInt,definition):example</source>
        <translation>.setDefinition(coupling);</translation>
    </message>
    <message>
        <source>!FConfigurationGenInt.creator.genericIntegrationConfiguration(bool,initializeConfiguration = false)</source>
        <translation>Makes a configuration.</translation>
    </message>
    <message>
        <source>!FConfigurationGenInt.creator.genericIntegrationConfiguration(bool,initializeConfiguration = false):argument0</source>
        <translation>true: the entries of the definition are made at once with their defaults</translation>
    </message>
    <message>
        <source>!FConfigurationGenInt.creator.genericIntegrationConfiguration(bool,initializeConfiguration = false):example</source>
        <translation>genericIntegrationConfiguration values() { .setDefinition(coupling); .setEntry("width",width); }</translation>
    </message>
    <message>
        <source>!FConfigurationGenInt.creator.genericIntegrationConfiguration(bool,initializeConfiguration = false):returnValue</source>
        <translation>the new configuration</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt</source>
        <translation>Describes the coupling to a program: the entries, the input templates and the result templates.</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.attribute.setCurFile(FGenIntFile,currentFile)</source>
        <translation>Notes which template an editor shows. It changes no result.</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.attribute.setCurFile(FGenIntFile,currentFile):argument0</source>
        <translation>the file</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.attribute.setCurFile(FGenIntFile,currentFile):example</source>
        <translation>.setCurFile(input);</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.attribute.setFiles(FCONTAINER,files)</source>
        <translation>Sets the templates of the coupling.</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.attribute.setFiles(FCONTAINER,files):argument0</source>
        <translation>list of input and result templates</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.attribute.setFiles(FCONTAINER,files):example</source>
        <translation>.setFiles([input,output]);</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.attribute.setLastFile(FGenIntFile,lastFile)</source>
        <translation>Notes which template an editor showed before. It changes no result.</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.attribute.setLastFile(FGenIntFile,lastFile):argument0</source>
        <translation>the file</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.attribute.setLastFile(FGenIntFile,lastFile):example</source>
        <translation>.setLastFile(output);</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.creator.genericIntegrationDefinition()</source>
        <translation>Makes the description of a coupling.</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.creator.genericIntegrationDefinition():example</source>
        <translation>genericIntegrationDefinition coupling() { .addEntry("width",1.0); .setFiles([input,output]); }</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.creator.genericIntegrationDefinition():returnValue</source>
        <translation>the new definition</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.mutableMember.addFile(FGenIntFile,file)</source>
        <translation>Adds a template to the definition, behind those that it has.</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.mutableMember.addFile(FGenIntFile,file):argument0</source>
        <translation>the input template or result template</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.mutableMember.addFile(FGenIntFile,file):example</source>
        <translation>square.addFile(output);</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.mutableMember.removeFile(FGenIntFile,file)</source>
        <translation>Takes a template out of the definition. The template itself stays in the project.</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.mutableMember.removeFile(FGenIntFile,file):argument0</source>
        <translation>the template</translation>
    </message>
    <message>
        <source>!FDefinitionGenInt.mutableMember.removeFile(FGenIntFile,file):example</source>
        <translation>square.removeFile(output);</translation>
    </message>
    <message>
        <source>!FEnum&lt;GenIntAnchorOccurrence&gt;</source>
        <translation>Which occurrence of an anchor a rule counts from: First or Last.</translation>
    </message>
    <message>
        <source>!FEnum&lt;SoftConItemSize&gt;</source>
        <translation>How large the items of a workbench are.</translation>
    </message>
    <message>
        <source>!FGenIntCommandFile</source>
        <translation>An input template: the text of an input file of the external program with &lt;entry&gt;name&lt;/entry&gt; tags. A run writes the file with the tags replaced by the values of the entries.</translation>
    </message>
    <message>
        <source>!FGenIntCommandFile.creator.genericIntegrationCommandFile()</source>
        <translation>Makes an input template.</translation>
    </message>
    <message>
        <source>!FGenIntCommandFile.creator.genericIntegrationCommandFile():example</source>
        <translation>genericIntegrationCommandFile input() { .setFileName("in.txt"); .setContent("&lt;entry&gt;width&lt;/entry&gt;"); }</translation>
    </message>
    <message>
        <source>!FGenIntCommandFile.creator.genericIntegrationCommandFile():returnValue</source>
        <translation>the new template</translation>
    </message>
    <message>
        <source>!FGenIntComputation</source>
        <translation>A run of an external program: it writes the input templates of its configuration's definition, runs the program and reads the result templates.</translation>
    </message>
    <message>
        <source>!FGenIntComputation.attribute.setConfiguration(FConfigurationGenInt,custom configuration)</source>
        <translation>Sets the configuration that the computation runs with.</translation>
    </message>
    <message>
        <source>!FGenIntComputation.attribute.setConfiguration(FConfigurationGenInt,custom configuration):argument0</source>
        <translation>the configuration</translation>
    </message>
    <message>
        <source>!FGenIntComputation.attribute.setConfiguration(FConfigurationGenInt,custom configuration):example</source>
        <translation>.setConfiguration(values);</translation>
    </message>
    <message>
        <source>!FGenIntComputation.attribute.setConfiguration(FConfigurationGenInt,custom configuration):returnValue</source>
        <translation>the computation itself</translation>
    </message>
    <message>
        <source>!FGenIntComputation.creator.genericIntegrationComputation()</source>
        <translation>Makes a computation that couples an external program by templates.</translation>
    </message>
    <message>
        <source>!FGenIntComputation.creator.genericIntegrationComputation():example</source>
        <translation>genericIntegrationComputation solver() { .setConfiguration(values); .setApplication("ccx"); .setArguments("-i beam"); }</translation>
    </message>
    <message>
        <source>!FGenIntComputation.creator.genericIntegrationComputation():returnValue</source>
        <translation>the new computation</translation>
    </message>
    <message>
        <source>!FGenIntComputation.member.getResults()</source>
        <translation>Gives the results of the computation for the current design. Asking never starts a run.</translation>
    </message>
    <message>
        <source>!FGenIntComputation.member.getResults():example</source>
        <translation>solver.getResults()</translation>
    </message>
    <message>
        <source>!FGenIntComputation.member.getResults():returnValue</source>
        <translation>the results of the current design</translation>
    </message>
    <message>
        <source>!FGenIntComputation.mutableMember.openSoftwareConnector()</source>
        <translation>Opens the connector of the computation in the desktop program. Without a display it does nothing.</translation>
    </message>
    <message>
        <source>!FGenIntComputation.mutableMember.openSoftwareConnector():example</source>
        <translation>solver.openSoftwareConnector();</translation>
    </message>
    <message>
        <source>!FGenIntEditor</source>
        <translation>Stands for the editor of a definition: once it has one, each computation that uses the definition gets a connector.</translation>
    </message>
    <message>
        <source>!FGenIntEditor.attribute.setDefinition(FDefinitionGenInt,definition)</source>
        <translation>Opens a connector for each computation that uses the definition.</translation>
    </message>
    <message>
        <source>!FGenIntEditor.attribute.setDefinition(FDefinitionGenInt,definition):argument0</source>
        <translation>The definition.</translation>
    </message>
    <message>
        <source>!FGenIntEditor.attribute.setDefinition(FDefinitionGenInt,definition):example</source>
        <translation>beam_editor.setDefinition(beam_definition);</translation>
    </message>
    <message>
        <source>!FGenIntEditor.attribute.setDefinition(FDefinitionGenInt,definition):returnValue</source>
        <translation>The editor itself.</translation>
    </message>
    <message>
        <source>!FGenIntEditor.creator.genericIntegrationEditor()</source>
        <translation>Makes the editor of a definition.</translation>
    </message>
    <message>
        <source>!FGenIntEditor.creator.genericIntegrationEditor():example</source>
        <translation>genericIntegrationEditor beam_editor()</translation>
    </message>
    <message>
        <source>!FGenIntEditor.creator.genericIntegrationEditor():returnValue</source>
        <translation>The editor.</translation>
    </message>
    <message>
        <source>!FGenIntFile</source>
        <translation>A text file that the project keeps: an input template or the sample of a result file.</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setContent(QString,content)</source>
        <translation>Sets the text of an input template or the sample of a result template. Projects are saved with the base64 form.</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setContent(QString,content):argument0</source>
        <translation>the text, or [B64] and its base64 form</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setContent(QString,content):example</source>
        <translation>.setContent("width = &lt;entry&gt;width&lt;/entry&gt;
");</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setContent(QString,content):returnValue</source>
        <translation>the template itself</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setContentFile(QString,contentFile)</source>
        <translation>The file of a project folder that holds the text. Only the script of a project that is kept as a folder says this.</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setContentFile(QString,contentFile):argument0</source>
        <translation>Path of the file, below files/ of the project's folder.</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setContentFile(QString,contentFile):example</source>
        <translation>beam_inp.setContentFile("files/beam.inp");</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setContentFile(QString,contentFile):returnValue</source>
        <translation>The file itself.</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setEncoding(QString,encoding)</source>
        <translation>How the file is written: ISO-8859-1, UTF-8-BOM, UTF-16LE or UTF-16BE; without it UTF-8. It is set when a template is taken from such a file, so that the written file has the same bytes.</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setEncoding(QString,encoding):argument0</source>
        <translation>name of the encoding, empty for UTF-8</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setEncoding(QString,encoding):example</source>
        <translation>input.setEncoding("ISO-8859-1");</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setFileName(QString,fileName)</source>
        <translation>Sets the name of the file that a run writes or leaves. Tags that refer to the file follow.</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setFileName(QString,fileName):argument0</source>
        <translation>name of the file relative to the run folder; it may not lead out of it</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setFileName(QString,fileName):example</source>
        <translation>.setFileName("input/beam.inp");</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setFileName(QString,fileName):returnValue</source>
        <translation>the template itself</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setForceWindowsLineEndings(bool,forceWindowsLineEndings)</source>
        <translation>Chooses line ends of carriage return and line feed for the written file. Carriage returns that the template has stay.</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setForceWindowsLineEndings(bool,forceWindowsLineEndings):argument0</source>
        <translation>true: a carriage return is written before each line feed</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setForceWindowsLineEndings(bool,forceWindowsLineEndings):example</source>
        <translation>.setForceWindowsLineEndings(true);</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setSource(QString,source)</source>
        <translation>Notes the file on disk that the text was taken from, so that a change of it can be told.</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setSource(QString,source):argument0</source>
        <translation>SHA-1 of the bytes of the file, two blanks, its path, relative to the project's folder or absolute.</translation>
    </message>
    <message>
        <source>!FGenIntFile.attribute.setSource(QString,source):example</source>
        <translation>beam_inp.setSource("da39a3ee5e6b4b0d3255bfef95601890afd80709  beam.inp");</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile</source>
        <translation>A result template: the name of a file that the external program leaves, how its lines split into columns, and the rules that find values in it. Its content is a sample of the file.</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.attribute.setNumberSeparator(bool,checked)</source>
        <translation>Chooses how columns are found: the numbers of a line are its columns, and all else is passed over. This is how templates begin.</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.attribute.setNumberSeparator(bool,checked):argument0</source>
        <translation>true or false</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.attribute.setNumberSeparator(bool,checked):example</source>
        <translation>.setNumberSeparator(true);</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.attribute.setRegExprSeparator(QString,regularExpression)</source>
        <translation>Separates columns at what a regular expression matches, in addition to white space if that is chosen. It counts only while numbers aren't looked for.</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.attribute.setRegExprSeparator(QString,regularExpression):argument0</source>
        <translation>regular expression that matches a separator</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.attribute.setRegExprSeparator(QString,regularExpression):example</source>
        <translation>.setRegExprSeparator(",");</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.attribute.setSpacesAndTabsSeparator(bool,checked)</source>
        <translation>Separates columns at white space. It counts only while numbers aren't looked for.</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.attribute.setSpacesAndTabsSeparator(bool,checked):argument0</source>
        <translation>true or false</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.attribute.setSpacesAndTabsSeparator(bool,checked):example</source>
        <translation>.setSpacesAndTabsSeparator(true);</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.attribute.setValues(FObjectList,values)</source>
        <translation>Replaces all rules of the template.</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.attribute.setValues(FObjectList,values):argument0</source>
        <translation>list of rules [name, line, column, anchor, occurrence, type, import type, average, rows]: line and column count from 0 and from the anchor, occurrence is First or Last, average is 0 or 1, rows the number of rows to average over or nullptr</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.attribute.setValues(FObjectList,values):example</source>
        <translation>.setValues([["deflection",2,3,"displacements",Last,"FDouble","",0,nullptr]]);</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.creator.genericIntegrationResultsFile()</source>
        <translation>Makes a result template.</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.creator.genericIntegrationResultsFile():example</source>
        <translation>genericIntegrationResultsFile output() { .setFileName("out.txt"); }</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.creator.genericIntegrationResultsFile():returnValue</source>
        <translation>the new template</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.mutableMember.changeValue(QString,name,int,line,int,column,QString,anchor,FEnum&lt;GenIntAnchorOccurrence&gt;,occurrence)</source>
        <translation>Lets the value of that name be read from another place.</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.mutableMember.changeValue(QString,name,int,line,int,column,QString,anchor,FEnum&lt;GenIntAnchorOccurrence&gt;,occurrence):argument0</source>
        <translation>name of the value</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.mutableMember.changeValue(QString,name,int,line,int,column,QString,anchor,FEnum&lt;GenIntAnchorOccurrence&gt;,occurrence):argument1</source>
        <translation>line, counted from the anchor</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.mutableMember.changeValue(QString,name,int,line,int,column,QString,anchor,FEnum&lt;GenIntAnchorOccurrence&gt;,occurrence):argument2</source>
        <translation>column, counted from 0</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.mutableMember.changeValue(QString,name,int,line,int,column,QString,anchor,FEnum&lt;GenIntAnchorOccurrence&gt;,occurrence):argument3</source>
        <translation>anchor text, empty for the whole file</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.mutableMember.changeValue(QString,name,int,line,int,column,QString,anchor,FEnum&lt;GenIntAnchorOccurrence&gt;,occurrence):argument4</source>
        <translation>First or Last occurrence of the anchor</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.mutableMember.changeValue(QString,name,int,line,int,column,QString,anchor,FEnum&lt;GenIntAnchorOccurrence&gt;,occurrence):example</source>
        <translation>output.changeValue("area",1,0,"AREA",First);</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.mutableMember.setRegExpSeparator(string,regularExpression)</source>
        <translation>Older form of setRegExprSeparator. A text that isn't empty also ends the search for numbers.</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.mutableMember.setRegExpSeparator(string,regularExpression):argument0</source>
        <translation>regular expression that matches a separator</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.mutableMember.setRegExpSeparator(string,regularExpression):example</source>
        <translation>.setRegExpSeparator(";");</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.mutableMember.setSpaceSeparator(bool,checked)</source>
        <translation>Older form of setSpacesAndTabsSeparator. True also ends the search for numbers.</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.mutableMember.setSpaceSeparator(bool,checked):argument0</source>
        <translation>true or false</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.mutableMember.setSpaceSeparator(bool,checked):example</source>
        <translation>.setSpaceSeparator(true);</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.mutableMember.setTabSeaparator(bool,checked)</source>
        <translation>Older form of setSpacesAndTabsSeparator, in the spelling that old projects have. True also ends the search for numbers.</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.mutableMember.setTabSeaparator(bool,checked):argument0</source>
        <translation>true or false</translation>
    </message>
    <message>
        <source>!FGenIntResultsFile.mutableMember.setTabSeaparator(bool,checked):example</source>
        <translation>.setTabSeaparator(true);</translation>
    </message>
    <message>
        <source>!FGenIntResultsFileValue</source>
        <translation>One rule: it names a value and tells where in a result file it stands, by anchor, occurrence, line and column, or as an average over the last rows.</translation>
    </message>
    <message>
        <source>!FImportSoftwareConnector</source>
        <translation>Brings a saved coupling, or a chain of them, into the project.</translation>
    </message>
    <message>
        <source>!FImportSoftwareConnector.creator.softwareConnectorImport()</source>
        <translation>Makes an import.</translation>
    </message>
    <message>
        <source>!FImportSoftwareConnector.creator.softwareConnectorImport():example</source>
        <translation>softwareConnectorImport import()</translation>
    </message>
    <message>
        <source>!FImportSoftwareConnector.creator.softwareConnectorImport():returnValue</source>
        <translation>The import, which reads files.</translation>
    </message>
    <message>
        <source>!FImportSoftwareConnector.mutableMember.read(string,fileName)</source>
        <translation>Reads a set-up file into the project, as one step; when a part of it fails, nothing is changed.</translation>
    </message>
    <message>
        <source>!FImportSoftwareConnector.mutableMember.read(string,fileName):argument0</source>
        <translation>The file; empty asks for it.</translation>
    </message>
    <message>
        <source>!FImportSoftwareConnector.mutableMember.read(string,fileName):example</source>
        <translation>import.read("chain.ovdl")</translation>
    </message>
    <message>
        <source>!FImportSoftwareConnector.mutableMember.read(string,fileName):returnValue</source>
        <translation>An empty list.</translation>
    </message>
    <message>
        <source>!FKeptConnector</source>
        <translation>The workbench of a computation, as the project keeps it where there is no window.</translation>
    </message>
    <message>
        <source>!FKeptConnector.attribute.setComputation(FExternComputation,computation)</source>
        <translation>Sets the computation that the workbench shows.</translation>
    </message>
    <message>
        <source>!FKeptConnector.attribute.setComputation(FExternComputation,computation):argument0</source>
        <translation>the computation</translation>
    </message>
    <message>
        <source>!FKeptConnector.attribute.setComputation(FExternComputation,computation):example</source>
        <translation>beam_connector.setComputation(beam);</translation>
    </message>
    <message>
        <source>!FKeptConnector.attribute.setItemSize(FEnum&lt;SoftConItemSize&gt;,size)</source>
        <translation>Sets how large the items are.</translation>
    </message>
    <message>
        <source>!FKeptConnector.attribute.setItemSize(FEnum&lt;SoftConItemSize&gt;,size):argument0</source>
        <translation>the size</translation>
    </message>
    <message>
        <source>!FKeptConnector.attribute.setItemSize(FEnum&lt;SoftConItemSize&gt;,size):example</source>
        <translation>beam_connector.setItemSize(Medium);</translation>
    </message>
    <message>
        <source>!FKeptConnector.attribute.setResultsPath(string,resultsPath)</source>
        <translation>Sets the folder that result files were added from last.</translation>
    </message>
    <message>
        <source>!FKeptConnector.attribute.setResultsPath(string,resultsPath):argument0</source>
        <translation>the folder</translation>
    </message>
    <message>
        <source>!FKeptConnector.attribute.setResultsPath(string,resultsPath):example</source>
        <translation>beam_connector.setResultsPath("designs/baseline/beam");</translation>
    </message>
    <message>
        <source>!FKeptConnector.creator.softwareConnector()</source>
        <translation>Makes the workbench of a computation. Without a window it is kept as it was saved.</translation>
    </message>
    <message>
        <source>!FKeptConnector.creator.softwareConnector():example</source>
        <translation>softwareConnector beam_connector()</translation>
    </message>
    <message>
        <source>!FKeptConnector.creator.softwareConnector():returnValue</source>
        <translation>the workbench</translation>
    </message>
    <message>
        <source>!FResultsGenInt</source>
        <translation>The values that were read from the result files of a computation, a table for each result template.</translation>
    </message>
    <message>
        <source>!FResultsGenInt.attribute.setOutputHandles(FCONTAINER,files)</source>
        <translation>Sets the result templates that the results are read by.</translation>
    </message>
    <message>
        <source>!FResultsGenInt.attribute.setOutputHandles(FCONTAINER,files):argument0</source>
        <translation>the result templates</translation>
    </message>
    <message>
        <source>!FResultsGenInt.attribute.setOutputHandles(FCONTAINER,files):example</source>
        <translation>.setOutputHandles([output]);</translation>
    </message>
    <message>
        <source>!FResultsGenInt.creator.genericIntegrationResults(FDesign,variant = nullptr,int,computationId = 0)</source>
        <translation>Makes results. Saved projects hold them; runs make them by themselves.</translation>
    </message>
    <message>
        <source>!FResultsGenInt.creator.genericIntegrationResults(FDesign,variant = nullptr,int,computationId = 0):argument0</source>
        <translation>the design</translation>
    </message>
    <message>
        <source>!FResultsGenInt.creator.genericIntegrationResults(FDesign,variant = nullptr,int,computationId = 0):argument1</source>
        <translation>saved number of the computation</translation>
    </message>
    <message>
        <source>!FResultsGenInt.creator.genericIntegrationResults(FDesign,variant = nullptr,int,computationId = 0):example</source>
        <translation>&amp;genericIntegrationResults results(baseline,1) {}</translation>
    </message>
    <message>
        <source>!FResultsGenInt.creator.genericIntegrationResults(FDesign,variant = nullptr,int,computationId = 0):returnValue</source>
        <translation>the new results</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getAverageOfLastRows(int,numberOfRows,int,column = 0)</source>
        <translation>Averages a column of the first table over its last rows. Not a number without rows.</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getAverageOfLastRows(int,numberOfRows,int,column = 0):argument0</source>
        <translation>how many rows; more than there are means all</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getAverageOfLastRows(int,numberOfRows,int,column = 0):argument1</source>
        <translation>column, from 0</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getAverageOfLastRows(int,numberOfRows,int,column = 0):example</source>
        <translation>solver.getResults().getAverageOfLastRows(10)</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getAverageOfLastRows(int,numberOfRows,int,column = 0):returnValue</source>
        <translation>the average</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(double,row,string,column header)</source>
        <translation>Gives one number of the first table. Not a number if there is no such element.</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(double,row,string,column header):argument0</source>
        <translation>row, from 0, as a whole number</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(double,row,string,column header):argument1</source>
        <translation>name of the column</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(double,row,string,column header):example</source>
        <translation>solver.getResults().getDataAt("deflection",0)</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(double,row,string,column header):returnValue</source>
        <translation>the number</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(string,row header,string,column header)</source>
        <translation>Gives one number of the first table. Not a number if there is no such element.</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(string,row header,string,column header):argument0</source>
        <translation>name of the row, which is the name of the value</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(string,row header,string,column header):argument1</source>
        <translation>name of the column</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(string,row header,string,column header):example</source>
        <translation>solver.getResults().getDataAt("deflection",0)</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(string,row header,string,column header):returnValue</source>
        <translation>the number</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(string,row header,unsigned,column)</source>
        <translation>Gives one number of the first table. Not a number if there is no such element.</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(string,row header,unsigned,column):argument0</source>
        <translation>name of the row, which is the name of the value</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(string,row header,unsigned,column):argument1</source>
        <translation>column, from 0</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(string,row header,unsigned,column):example</source>
        <translation>solver.getResults().getDataAt("deflection",0)</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(string,row header,unsigned,column):returnValue</source>
        <translation>the number</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(unsigned,row,unsigned,column)</source>
        <translation>Gives one number of the first table. Not a number if there is no such element.</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(unsigned,row,unsigned,column):argument0</source>
        <translation>row, from 0</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(unsigned,row,unsigned,column):argument1</source>
        <translation>column, from 0</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(unsigned,row,unsigned,column):example</source>
        <translation>solver.getResults().getDataAt("deflection",0)</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getDataAt(unsigned,row,unsigned,column):returnValue</source>
        <translation>the number</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getLastDataOfColumn(int,column = 0)</source>
        <translation>Gives the number in the last row of a column of the first table. Not a number if there is no such element.</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getLastDataOfColumn(int,column = 0):argument0</source>
        <translation>column, from 0</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getLastDataOfColumn(int,column = 0):example</source>
        <translation>solver.getResults().getLastDataOfColumn(0)</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getLastDataOfColumn(int,column = 0):returnValue</source>
        <translation>the number</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getLastDataOfRow(int,row = 0)</source>
        <translation>Gives the number in the last column of a row of the first table. Not a number if there is no such element.</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getLastDataOfRow(int,row = 0):argument0</source>
        <translation>row, from 0</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getLastDataOfRow(int,row = 0):example</source>
        <translation>solver.getResults().getLastDataOfRow(0)</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getLastDataOfRow(int,row = 0):returnValue</source>
        <translation>the number</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getResultTemplateName(string,fileName)</source>
        <translation>Tells which result template belongs to a file name.</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getResultTemplateName(string,fileName):argument0</source>
        <translation>file name of the result template</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getResultTemplateName(string,fileName):example</source>
        <translation>solver.getResults().getResultTemplateName("out.txt")</translation>
    </message>
    <message>
        <source>!FResultsGenInt.member.getResultTemplateName(string,fileName):returnValue</source>
        <translation>the template's name in the project, empty if there is none</translation>
    </message>
    <message>
        <source>!Global.importGenIntDefinition(string,fileName = "")</source>
        <translation>Reads a definition from a file, with its templates. Nothing is kept of a file that can't be read whole.</translation>
    </message>
    <message>
        <source>!Global.importGenIntDefinition(string,fileName = ""):argument0</source>
        <translation>the definition file (.ovdl)</translation>
    </message>
    <message>
        <source>!Global.importGenIntDefinition(string,fileName = ""):example</source>
        <translation>importGenIntDefinition("coupling.ovdl");</translation>
    </message>
    <message>
        <source>!Global.importGenIntDefinition(string,fileName = ""):returnValue</source>
        <translation>the new definition, or nothing if the file can't be read</translation>
    </message>
</context>
</TS>
