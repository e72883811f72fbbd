<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name>FObject</name>
    <message>
        <source>!FAttribCmd</source>
        <translation>A command that sets an attribute of an object. The present values of attributes are what a saved project holds.</translation>
    </message>
    <message>
        <source>!FBasicType</source>
        <translation>Base of the values: numbers, texts, truth values, lists and files. A value has a text form that templates take.</translation>
    </message>
    <message>
        <source>!FBool</source>
        <translation>A truth value: true or false.</translation>
    </message>
    <message>
        <source>!FCmd</source>
        <translation>A script command, or a call of one as part of an expression.</translation>
    </message>
    <message>
        <source>!FComputationResults</source>
        <translation>The results of one computation for one design.</translation>
    </message>
    <message>
        <source>!FConfiguration</source>
        <translation>Base of configurations: the values of the entries of a definition.</translation>
    </message>
    <message>
        <source>!FConfiguration.member.getEntry(string,name)</source>
        <translation>Gives the value of an entry. An entry that isn't there is an error.</translation>
    </message>
    <message>
        <source>!FConfiguration.member.getEntry(string,name):argument0</source>
        <translation>full name of the entry</translation>
    </message>
    <message>
        <source>!FConfiguration.member.getEntry(string,name):example</source>
        <translation>values.getEntry("material|E")</translation>
    </message>
    <message>
        <source>!FConfiguration.member.getEntry(string,name):returnValue</source>
        <translation>the value of the entry</translation>
    </message>
    <message>
        <source>!FConfiguration.mutableMember.setEntry(string,name,FObject,value)</source>
        <translation>Gives an entry a value. The value is an expression and stays one.</translation>
    </message>
    <message>
        <source>!FConfiguration.mutableMember.setEntry(string,name,FObject,value):argument0</source>
        <translation>full name of the entry, groups separated by a bar, in any case</translation>
    </message>
    <message>
        <source>!FConfiguration.mutableMember.setEntry(string,name,FObject,value):argument1</source>
        <translation>value or expression of the entry's type</translation>
    </message>
    <message>
        <source>!FConfiguration.mutableMember.setEntry(string,name,FObject,value):example</source>
        <translation>.setEntry("material|E",1.05*modulus);</translation>
    </message>
    <message>
        <source>!FConfigurationCustom</source>
        <translation>A configuration that belongs to a definition. Values that are set before the definition is known wait for it.</translation>
    </message>
    <message>
        <source>!FConfigurationCustom.attribute.setDefinition(FDefinitionCustom,definition)</source>
        <translation>Sets the definition whose entries the configuration gives values to. Values that waited for it are applied.</translation>
    </message>
    <message>
        <source>!FConfigurationCustom.attribute.setDefinition(FDefinitionCustom,definition):argument0</source>
        <translation>the definition</translation>
    </message>
    <message>
        <source>!FConfigurationCustom.attribute.setDefinition(FDefinitionCustom,definition):example</source>
        <translation>.setDefinition(coupling);</translation>
    </message>
    <message>
        <source>!FCreateCmd</source>
        <translation>A command that makes a named object, such as parameter.</translation>
    </message>
    <message>
        <source>!FCustomComputation</source>
        <translation>A computation with a configuration, which supplies the inputs, and results.</translation>
    </message>
    <message>
        <source>!FCustomComputation.attribute.setCmdFile(string,fileName)</source>
        <translation>Sets the name of a command file. Computations with templates don't use it.</translation>
    </message>
    <message>
        <source>!FCustomComputation.attribute.setCmdFile(string,fileName):argument0</source>
        <translation>name of the file</translation>
    </message>
    <message>
        <source>!FCustomComputation.attribute.setCmdFile(string,fileName):example</source>
        <translation>.setCmdFile("run.cmd");</translation>
    </message>
    <message>
        <source>!FCustomComputation.attribute.setConfiguration(FConfigurationCustom,configuration)</source>
        <translation>Sets the configuration that the computation runs with.</translation>
    </message>
    <message>
        <source>!FCustomComputation.attribute.setConfiguration(FConfigurationCustom,configuration):argument0</source>
        <translation>the configuration</translation>
    </message>
    <message>
        <source>!FCustomComputation.attribute.setConfiguration(FConfigurationCustom,configuration):example</source>
        <translation>.setConfiguration(values);</translation>
    </message>
    <message>
        <source>!FCustomComputation.member.getResults()</source>
        <translation>Gives the results of the computation for the current design. Asking never starts a run.</translation>
    </message>
    <message>
        <source>!FCustomComputation.member.getResults():example</source>
        <translation>solver.getResults()</translation>
    </message>
    <message>
        <source>!FCustomComputation.member.getResults():returnValue</source>
        <translation>the results of the current design</translation>
    </message>
    <message>
        <source>!FDefinition</source>
        <translation>A definition whose entries scripts can add, rename and remove.</translation>
    </message>
    <message>
        <source>!FDefinition.attribute.setEntryDefsFromDB(string,text)</source>
        <translation>Replaces all entry definitions by saved ones.</translation>
    </message>
    <message>
        <source>!FDefinition.attribute.setEntryDefsFromDB(string,text):argument0</source>
        <translation>the definitions in XML, as saved</translation>
    </message>
    <message>
        <source>!FDefinition.attribute.setEntryDefsFromDB(string,text):example</source>
        <translation>.setEntryDefsFromDB("&lt;?xml version=\"1.0\" encoding=\"UTF-8\" ?&gt;...");</translation>
    </message>
    <message>
        <source>!FDefinition.mutableMember.addEntry(string,name,FObject,value)</source>
        <translation>Adds an entry definition. Its name keeps letters, digits, underscores and points.</translation>
    </message>
    <message>
        <source>!FDefinition.mutableMember.addEntry(string,name,FObject,value):argument0</source>
        <translation>name of the entry, groups in front separated by bars; groups are made as needed</translation>
    </message>
    <message>
        <source>!FDefinition.mutableMember.addEntry(string,name,FObject,value):argument1</source>
        <translation>default value, which also tells the type</translation>
    </message>
    <message>
        <source>!FDefinition.mutableMember.addEntry(string,name,FObject,value):example</source>
        <translation>.addEntry("material|E",210e9);</translation>
    </message>
    <message>
        <source>!FDefinition.mutableMember.removeEntry(string,name)</source>
        <translation>Removes an entry definition and all that is in it.</translation>
    </message>
    <message>
        <source>!FDefinition.mutableMember.removeEntry(string,name):argument0</source>
        <translation>full name of the entry</translation>
    </message>
    <message>
        <source>!FDefinition.mutableMember.removeEntry(string,name):example</source>
        <translation>.removeEntry("material|E");</translation>
    </message>
    <message>
        <source>!FDefinition.mutableMember.renameEntry(string,name,string,newName)</source>
        <translation>Renames an entry definition. Tags of the input templates follow.</translation>
    </message>
    <message>
        <source>!FDefinition.mutableMember.renameEntry(string,name,string,newName):argument0</source>
        <translation>full name of the entry</translation>
    </message>
    <message>
        <source>!FDefinition.mutableMember.renameEntry(string,name,string,newName):argument1</source>
        <translation>its new name, without the group</translation>
    </message>
    <message>
        <source>!FDefinition.mutableMember.renameEntry(string,name,string,newName):example</source>
        <translation>.renameEntry("material|E","modulus");</translation>
    </message>
    <message>
        <source>!FDefinitionBase</source>
        <translation>Base of definitions: the entries that inputs are made of.</translation>
    </message>
    <message>
        <source>!FDefinitionCustom</source>
        <translation>A definition that can be saved to a file and imported into other projects.</translation>
    </message>
    <message>
        <source>!FDefinitionCustomBase</source>
        <translation>Base of definitions that can be saved to a file of their own.</translation>
    </message>
    <message>
        <source>!FDesign</source>
        <translation>A variant of the model: values of parameters that hold while the design is current. The design baseline is always there and holds the values of the parameters themselves.</translation>
    </message>
    <message>
        <source>!FDesign.creator.design()</source>
        <translation>Makes a design, a variant of the model.</translation>
    </message>
    <message>
        <source>!FDesign.creator.design():example</source>
        <translation>design wide() { .setValue("width",4); }</translation>
    </message>
    <message>
        <source>!FDesign.creator.design():returnValue</source>
        <translation>the new design</translation>
    </message>
    <message>
        <source>!FDesign.mutableMember.duplicate(string,name = "")</source>
        <translation>Makes a design with the same values.</translation>
    </message>
    <message>
        <source>!FDesign.mutableMember.duplicate(string,name = ""):argument0</source>
        <translation>name of the new design; the name of this one with a number if it is empty</translation>
    </message>
    <message>
        <source>!FDesign.mutableMember.duplicate(string,name = ""):example</source>
        <translation>wide.duplicate("wider");</translation>
    </message>
    <message>
        <source>!FDesign.mutableMember.duplicate(string,name = ""):returnValue</source>
        <translation>the new design</translation>
    </message>
    <message>
        <source>!FDesign.mutableMember.setValue(string,parameter,FObject,value)</source>
        <translation>Sets the value that a parameter has in this design.</translation>
    </message>
    <message>
        <source>!FDesign.mutableMember.setValue(string,parameter,FObject,value):argument0</source>
        <translation>name of the parameter</translation>
    </message>
    <message>
        <source>!FDesign.mutableMember.setValue(string,parameter,FObject,value):argument1</source>
        <translation>its value in this design</translation>
    </message>
    <message>
        <source>!FDesign.mutableMember.setValue(string,parameter,FObject,value):example</source>
        <translation>wide.setValue("width",4);</translation>
    </message>
    <message>
        <source>!FDesign.mutableMember.unsetValue(string,parameter)</source>
        <translation>Lets a parameter have its own value again in this design.</translation>
    </message>
    <message>
        <source>!FDesign.mutableMember.unsetValue(string,parameter):argument0</source>
        <translation>name of the parameter</translation>
    </message>
    <message>
        <source>!FDesign.mutableMember.unsetValue(string,parameter):example</source>
        <translation>wide.unsetValue("width");</translation>
    </message>
    <message>
        <source>!FDouble</source>
        <translation>A floating point number of double precision. It is written so that it reads back to the same bits.</translation>
    </message>
    <message>
        <source>!FDrawable</source>
        <translation>Geometry that can be drawn.</translation>
    </message>
    <message>
        <source>!FEntity</source>
        <translation>Base of the managed objects that belong to the model.</translation>
    </message>
    <message>
        <source>!FEntityGroup</source>
        <translation>Geometry that belongs together.</translation>
    </message>
    <message>
        <source>!FEntry</source>
        <translation>The value of one entry definition in a configuration. The value is an expression and stays one, so it follows the parameters that it names.</translation>
    </message>
    <message>
        <source>!FEntry.attribute.setValue(FObject,value)</source>
        <translation>Gives the entry a value of the type of its definition. Another type is refused.</translation>
    </message>
    <message>
        <source>!FEntry.attribute.setValue(FObject,value):argument0</source>
        <translation>value or expression</translation>
    </message>
    <message>
        <source>!FEntry.attribute.setValue(FObject,value):example</source>
        <translation>values.getEntry("width").setValue(2*height);</translation>
    </message>
    <message>
        <source>!FEntryBase</source>
        <translation>Base of entry definitions and entries, which form groups of any depth.</translation>
    </message>
    <message>
        <source>!FEntryDef</source>
        <translation>One quantity of a definition that a configuration gives a value to, with its default, which also tells the type. A group holds further definitions.</translation>
    </message>
    <message>
        <source>!FEnum&lt;DocuArea&gt;</source>
        <translation>Part of an object's documentation: Description, Example, Help or ReturnValue, or several joined by a bar.</translation>
    </message>
    <message>
        <source>!FEnumBase</source>
        <translation>Base of the values that are one of a fixed set of words.</translation>
    </message>
    <message>
        <source>!FExternComputation</source>
        <translation>Runs an external program in a fresh folder for each design. Its program, arguments, standard input, environment and time limit are attributes; no shell is involved.</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setApplication(string,application)</source>
        <translation>Sets the program to run.</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setApplication(string,application):argument0</source>
        <translation>name of the program, looked up in PATH, or its path</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setApplication(string,application):example</source>
        <translation>.setApplication("ccx");</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setArguments(string,arguments)</source>
        <translation>Sets the arguments of the program. No shell is involved: pipes, redirections and wildcards need sh -c.</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setArguments(string,arguments):argument0</source>
        <translation>the arguments in one text, split into words as a POSIX shell splits them; quotes keep words together</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setArguments(string,arguments):example</source>
        <translation>.setArguments("-i beam");</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setDbId(int,id)</source>
        <translation>Sets the number under which saved results know the computation. Saving writes it where it is needed.</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setDbId(int,id):argument0</source>
        <translation>a whole number from 1</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setDbId(int,id):example</source>
        <translation>.setDbId(3);</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setEnvironment(strings,variables)</source>
        <translation>Sets environment variables for the program in addition to the ones of Turnbuckle.</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setEnvironment(strings,variables):argument0</source>
        <translation>list of texts NAME=VALUE</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setEnvironment(strings,variables):example</source>
        <translation>.setEnvironment(["OMP_NUM_THREADS=1"]);</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setStandardInput(string,fileName)</source>
        <translation>Sets the file that the program reads as its standard input, such as an input template. Without one it reads nothing.</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setStandardInput(string,fileName):argument0</source>
        <translation>name of a file in the run folder; empty for none</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setStandardInput(string,fileName):example</source>
        <translation>.setStandardInput("commands.txt");</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setTimeout(double,seconds)</source>
        <translation>Sets the time limit of a run. When it is over, the program and all that it started are ended, and the run has failed.</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setTimeout(double,seconds):argument0</source>
        <translation>seconds, 0 for no limit</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setTimeout(double,seconds):example</source>
        <translation>.setTimeout(60);</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setWaitForAll(bool,wait)</source>
        <translation>Says whether a run ends with the last process that the program started and left in the background. Otherwise such processes are ended when the program has ended, and every value of the run carries a note. The time limit counts for both.</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setWaitForAll(bool,wait):argument0</source>
        <translation>true to wait for all processes</translation>
    </message>
    <message>
        <source>!FExternComputation.attribute.setWaitForAll(bool,wait):example</source>
        <translation>.setWaitForAll(true);</translation>
    </message>
    <message>
        <source>!FExternComputation.mutableMember.rereadResults()</source>
        <translation>Reads the result files on the disk again without a run.</translation>
    </message>
    <message>
        <source>!FExternComputation.mutableMember.rereadResults():example</source>
        <translation>solver.rereadResults();</translation>
    </message>
    <message>
        <source>!FExternComputation.mutableMember.run()</source>
        <translation>Runs the computation for the current design, after the ones that it needs. Refused while a project is loading: use turnbuckle run.</translation>
    </message>
    <message>
        <source>!FExternComputation.mutableMember.run():example</source>
        <translation>solver.run();</translation>
    </message>
    <message>
        <source>!FFeatureDefinitionBase</source>
        <translation>How geometry is made, or written.</translation>
    </message>
    <message>
        <source>!FFeatureMember</source>
        <translation>A part of what a feature makes.</translation>
    </message>
    <message>
        <source>!FFileName</source>
        <translation>A text that names a file. Tags of an input template write the name.</translation>
    </message>
    <message>
        <source>!FGeometryExport</source>
        <translation>Geometry that is written for the external program. This host has no geometry kernel: the file must be there when a run starts.</translation>
    </message>
    <message>
        <source>!FInputFile</source>
        <translation>A file of yours that is copied into the run folder of each run, with its time stamp. Tags write where the copy stands.</translation>
    </message>
    <message>
        <source>!FInteger</source>
        <translation>A whole number of 32 bits with sign.</translation>
    </message>
    <message>
        <source>!FManaged</source>
        <translation>Base of all objects that have a name, are saved with the project and can be removed. A name is an identifier and stands for one object only.</translation>
    </message>
    <message>
        <source>!FManaged.attribute.setName(FObjectName,name)</source>
        <translation>Renames the object. A name that is no identifier is corrected, one that is taken gets a number; references follow.</translation>
    </message>
    <message>
        <source>!FManaged.attribute.setName(FObjectName,name):argument0</source>
        <translation>the new name</translation>
    </message>
    <message>
        <source>!FManaged.attribute.setName(FObjectName,name):example</source>
        <translation>height.setName("thickness");</translation>
    </message>
    <message>
        <source>!FManaged.attribute.setName(FObjectName,name):returnValue</source>
        <translation>the object itself</translation>
    </message>
    <message>
        <source>!FManaged.mutableMember.addDocu(QString,text,FEnum&lt;DocuArea&gt;,area)</source>
        <translation>Adds a documentation text to the object. It is saved with the project.</translation>
    </message>
    <message>
        <source>!FManaged.mutableMember.addDocu(QString,text,FEnum&lt;DocuArea&gt;,area):argument0</source>
        <translation>the text</translation>
    </message>
    <message>
        <source>!FManaged.mutableMember.addDocu(QString,text,FEnum&lt;DocuArea&gt;,area):argument1</source>
        <translation>where it belongs: Description, Example, Help or ReturnValue</translation>
    </message>
    <message>
        <source>!FManaged.mutableMember.addDocu(QString,text,FEnum&lt;DocuArea&gt;,area):example</source>
        <translation>height.addDocu("Height of the section in m.","Description");</translation>
    </message>
    <message>
        <source>!FManaged.mutableMember.destroy()</source>
        <translation>Takes the object out of the project, with what belongs to it alone. Undo brings it back.</translation>
    </message>
    <message>
        <source>!FManaged.mutableMember.destroy():example</source>
        <translation>wide.destroy();</translation>
    </message>
    <message>
        <source>!FMemberCmd</source>
        <translation>A command that is called on an object.</translation>
    </message>
    <message>
        <source>!FObject</source>
        <translation>Root of everything that a script can name: values, expressions, commands and managed objects.</translation>
    </message>
    <message>
        <source>!FObjectList</source>
        <translation>A list of objects or expressions, in the order given.</translation>
    </message>
    <message>
        <source>!FObjectName</source>
        <translation>The name of an object: letters, digits and underscores, no digit first. Other characters are replaced.</translation>
    </message>
    <message>
        <source>!FParameter</source>
        <translation>A named value of the model. The value is an expression and stays one; it is evaluated again when something in it has changed.</translation>
    </message>
    <message>
        <source>!FParameter.attribute.setValue(FObject,value)</source>
        <translation>Gives the parameter a value or an expression. One that would depend on the parameter itself is refused.</translation>
    </message>
    <message>
        <source>!FParameter.attribute.setValue(FObject,value):argument0</source>
        <translation>value or expression</translation>
    </message>
    <message>
        <source>!FParameter.attribute.setValue(FObject,value):example</source>
        <translation>area.setValue(width*height);</translation>
    </message>
    <message>
        <source>!FParameter.creator.parameter(FObject,value = nullptr)</source>
        <translation>Makes a parameter. Without a value it has none until one is set.</translation>
    </message>
    <message>
        <source>!FParameter.creator.parameter(FObject,value = nullptr):argument0</source>
        <translation>value or expression</translation>
    </message>
    <message>
        <source>!FParameter.creator.parameter(FObject,value = nullptr):example</source>
        <translation>parameter width(2.5);</translation>
    </message>
    <message>
        <source>!FParameter.creator.parameter(FObject,value = nullptr):returnValue</source>
        <translation>the new parameter</translation>
    </message>
    <message>
        <source>!FParser</source>
        <translation>Base of the readers of stored texts.</translation>
    </message>
    <message>
        <source>!FResults</source>
        <translation>Base of the results that belong to a design.</translation>
    </message>
    <message>
        <source>!FResultsFileName</source>
        <translation>The name of a file that the external program leaves, for use by another computation.</translation>
    </message>
    <message>
        <source>!FResultsGeneric</source>
        <translation>Results as tables, one per result template. The files are read when the first value is asked for, and again when a result template has changed.</translation>
    </message>
    <message>
        <source>!FResultsGeneric.member.getImport(string,name)</source>
        <translation>Gives what was imported from a file that a result file names.</translation>
    </message>
    <message>
        <source>!FResultsGeneric.member.getImport(string,name):argument0</source>
        <translation>name of the value whose file was imported</translation>
    </message>
    <message>
        <source>!FResultsGeneric.member.getImport(string,name):example</source>
        <translation>solver.getResults().getImport("field")</translation>
    </message>
    <message>
        <source>!FResultsGeneric.member.getImport(string,name):returnValue</source>
        <translation>the imported table</translation>
    </message>
    <message>
        <source>!FResultsGeneric.member.getResultFileName(string,fileName)</source>
        <translation>Gives the path of a file in the run folder, so that another computation can take the file.</translation>
    </message>
    <message>
        <source>!FResultsGeneric.member.getResultFileName(string,fileName):argument0</source>
        <translation>name of the file relative to the run folder</translation>
    </message>
    <message>
        <source>!FResultsGeneric.member.getResultFileName(string,fileName):example</source>
        <translation>inputFile(solver.getResults().getResultFileName("field.dat"),"")</translation>
    </message>
    <message>
        <source>!FResultsGeneric.member.getResultFileName(string,fileName):returnValue</source>
        <translation>the absolute path, for entries of other computations</translation>
    </message>
    <message>
        <source>!FResultsGeneric.member.getTable(string,name)</source>
        <translation>Gives the table of a result template, in any case of the name. The result files are read if they have not been.</translation>
    </message>
    <message>
        <source>!FResultsGeneric.member.getTable(string,name):argument0</source>
        <translation>file name of the result template, or its name in the project</translation>
    </message>
    <message>
        <source>!FResultsGeneric.member.getTable(string,name):example</source>
        <translation>solver.getResults().getTable("out.txt")</translation>
    </message>
    <message>
        <source>!FResultsGeneric.member.getTable(string,name):returnValue</source>
        <translation>the table, or nothing if there is none</translation>
    </message>
    <message>
        <source>!FScope</source>
        <translation>Base of objects in which names are looked up.</translation>
    </message>
    <message>
        <source>!FString</source>
        <translation>A text.</translation>
    </message>
    <message>
        <source>!FTableData</source>
        <translation>A table of numbers with row and column headers. Each value that a rule found is one row with one column; a value that was not found is not a number.</translation>
    </message>
    <message>
        <source>!FTableData.member.columnCount()</source>
        <translation>Tells how many columns the first row has.</translation>
    </message>
    <message>
        <source>!FTableData.member.columnCount():example</source>
        <translation>solver.getResults().getTable("out.txt").columnCount()</translation>
    </message>
    <message>
        <source>!FTableData.member.columnCount():returnValue</source>
        <translation>the number of columns</translation>
    </message>
    <message>
        <source>!FTableData.member.getAverageOfLastRows(int,numberOfRows,int,column = 0)</source>
        <translation>Averages a column over the last rows of the table. Not a number without rows.</translation>
    </message>
    <message>
        <source>!FTableData.member.getAverageOfLastRows(int,numberOfRows,int,column = 0):argument0</source>
        <translation>how many rows; more than there are means all</translation>
    </message>
    <message>
        <source>!FTableData.member.getAverageOfLastRows(int,numberOfRows,int,column = 0):argument1</source>
        <translation>column, from 0</translation>
    </message>
    <message>
        <source>!FTableData.member.getAverageOfLastRows(int,numberOfRows,int,column = 0):example</source>
        <translation>solver.getResults().getTable("out.txt").getAverageOfLastRows(10)</translation>
    </message>
    <message>
        <source>!FTableData.member.getAverageOfLastRows(int,numberOfRows,int,column = 0):returnValue</source>
        <translation>the average</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(int,row,int,column = 0)</source>
        <translation>Gives one number of the table. Not a number if there is no such element.</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(int,row,int,column = 0):argument0</source>
        <translation>row, from 0</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(int,row,int,column = 0):argument1</source>
        <translation>column, from 0</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(int,row,int,column = 0):example</source>
        <translation>solver.getResults().getTable("out.txt").getElementAt("deflection")</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(int,row,int,column = 0):returnValue</source>
        <translation>the number</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(int,row,string,column header)</source>
        <translation>Gives one number of the table. Not a number if there is no such element.</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(int,row,string,column header):argument0</source>
        <translation>row, from 0</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(int,row,string,column header):argument1</source>
        <translation>name of the column</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(int,row,string,column header):example</source>
        <translation>solver.getResults().getTable("out.txt").getElementAt("deflection")</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(int,row,string,column header):returnValue</source>
        <translation>the number</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(string,row header,int,column = 0)</source>
        <translation>Gives one number of the table. Not a number if there is no such element.</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(string,row header,int,column = 0):argument0</source>
        <translation>name of the row, which is the name of the value</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(string,row header,int,column = 0):argument1</source>
        <translation>column, from 0</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(string,row header,int,column = 0):example</source>
        <translation>solver.getResults().getTable("out.txt").getElementAt("deflection")</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(string,row header,int,column = 0):returnValue</source>
        <translation>the number</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(string,row header,string,column header)</source>
        <translation>Gives one number of the table. Not a number if there is no such element.</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(string,row header,string,column header):argument0</source>
        <translation>name of the row, which is the name of the value</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(string,row header,string,column header):argument1</source>
        <translation>name of the column</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(string,row header,string,column header):example</source>
        <translation>solver.getResults().getTable("out.txt").getElementAt("deflection")</translation>
    </message>
    <message>
        <source>!FTableData.member.getElementAt(string,row header,string,column header):returnValue</source>
        <translation>the number</translation>
    </message>
    <message>
        <source>!FTableData.member.getLastElementOfColumn(int,column = 0)</source>
        <translation>Gives the number in the last row of a column. Not a number if there is no such element.</translation>
    </message>
    <message>
        <source>!FTableData.member.getLastElementOfColumn(int,column = 0):argument0</source>
        <translation>column, from 0</translation>
    </message>
    <message>
        <source>!FTableData.member.getLastElementOfColumn(int,column = 0):example</source>
        <translation>solver.getResults().getTable("out.txt").getLastElementOfColumn(0)</translation>
    </message>
    <message>
        <source>!FTableData.member.getLastElementOfColumn(int,column = 0):returnValue</source>
        <translation>the number</translation>
    </message>
    <message>
        <source>!FTableData.member.getLastElementOfRow(int,row = 0)</source>
        <translation>Gives the number in the last column of a row. Not a number if there is no such element.</translation>
    </message>
    <message>
        <source>!FTableData.member.getLastElementOfRow(int,row = 0):argument0</source>
        <translation>row, from 0</translation>
    </message>
    <message>
        <source>!FTableData.member.getLastElementOfRow(int,row = 0):example</source>
        <translation>solver.getResults().getTable("out.txt").getLastElementOfRow(0)</translation>
    </message>
    <message>
        <source>!FTableData.member.getLastElementOfRow(int,row = 0):returnValue</source>
        <translation>the number</translation>
    </message>
    <message>
        <source>!FTableData.member.rowCount()</source>
        <translation>Tells how many rows the table has.</translation>
    </message>
    <message>
        <source>!FTableData.member.rowCount():example</source>
        <translation>solver.getResults().getTable("out.txt").rowCount()</translation>
    </message>
    <message>
        <source>!FTableData.member.rowCount():returnValue</source>
        <translation>the number of rows</translation>
    </message>
    <message>
        <source>!FUnsigned</source>
        <translation>A whole number of 32 bits without sign.</translation>
    </message>
    <message>
        <source>!FWord</source>
        <translation>A bare word, such as Last, where a word of a fixed set is expected.</translation>
    </message>
    <message>
        <source>!Global.abs(double,x)</source>
        <translation>Absolute value.</translation>
    </message>
    <message>
        <source>!Global.acos(double,x)</source>
        <translation>Arc cosine, in radians.</translation>
    </message>
    <message>
        <source>!Global.asin(double,x)</source>
        <translation>Arc sine, in radians.</translation>
    </message>
    <message>
        <source>!Global.atan(double,x)</source>
        <translation>Arc tangent, in radians.</translation>
    </message>
    <message>
        <source>!Global.atan2(double,a,double,b)</source>
        <translation>Angle of the point with height a and width b, in radians, in the right quadrant.</translation>
    </message>
    <message>
        <source>!Global.ceil(double,x)</source>
        <translation>The next whole number that isn't less.</translation>
    </message>
    <message>
        <source>!Global.cos(double,x)</source>
        <translation>Cosine of an angle in radians.</translation>
    </message>
    <message>
        <source>!Global.exp(double,x)</source>
        <translation>Power of e.</translation>
    </message>
    <message>
        <source>!Global.fileName(string,path)</source>
        <translation>A file name as a value. Nothing is copied.</translation>
    </message>
    <message>
        <source>!Global.fileName(string,path):argument0</source>
        <translation>the name</translation>
    </message>
    <message>
        <source>!Global.fileName(string,path):example</source>
        <translation>.setEntry("library",fileName("/opt/materials.lib"));</translation>
    </message>
    <message>
        <source>!Global.fileName(string,path):returnValue</source>
        <translation>the value</translation>
    </message>
    <message>
        <source>!Global.floor(double,x)</source>
        <translation>The next whole number that isn't greater.</translation>
    </message>
    <message>
        <source>!Global.geometryExport(string,path,FObject,objects = nullptr)</source>
        <translation>A geometry file for the program.</translation>
    </message>
    <message>
        <source>!Global.geometryExport(string,path,FObject,objects = nullptr):argument0</source>
        <translation>name of the file</translation>
    </message>
    <message>
        <source>!Global.geometryExport(string,path,FObject,objects = nullptr):argument1</source>
        <translation>the geometry that is written, a list</translation>
    </message>
    <message>
        <source>!Global.geometryExport(string,path,FObject,objects = nullptr):example</source>
        <translation>.addEntry("Exports|hull",geometryExport("hull.stl"));</translation>
    </message>
    <message>
        <source>!Global.geometryExport(string,path,FObject,objects = nullptr):returnValue</source>
        <translation>the value</translation>
    </message>
    <message>
        <source>!Global.inputFile(FObject,path,FObject,directory = nullptr)</source>
        <translation>A file of yours that each run gets a copy of.</translation>
    </message>
    <message>
        <source>!Global.inputFile(FObject,path,FObject,directory = nullptr):argument0</source>
        <translation>the file; relative names count from the project's folder</translation>
    </message>
    <message>
        <source>!Global.inputFile(FObject,path,FObject,directory = nullptr):argument1</source>
        <translation>folder of the copy within the run folder, with a slash at the end; none: the run folder</translation>
    </message>
    <message>
        <source>!Global.inputFile(FObject,path,FObject,directory = nullptr):example</source>
        <translation>.setEntry("Exports|mesh",inputFile("mesh.msh","data/"));</translation>
    </message>
    <message>
        <source>!Global.inputFile(FObject,path,FObject,directory = nullptr):returnValue</source>
        <translation>the value</translation>
    </message>
    <message>
        <source>!Global.log(double,x)</source>
        <translation>Natural logarithm.</translation>
    </message>
    <message>
        <source>!Global.log10(double,x)</source>
        <translation>Logarithm to base 10.</translation>
    </message>
    <message>
        <source>!Global.max(double,a,double,b)</source>
        <translation>The greater of two numbers.</translation>
    </message>
    <message>
        <source>!Global.min(double,a,double,b)</source>
        <translation>The lesser of two numbers.</translation>
    </message>
    <message>
        <source>!Global.pow(double,a,double,b)</source>
        <translation>The power a to the b, as a^b.</translation>
    </message>
    <message>
        <source>!Global.redo()</source>
        <translation>Does again what was undone last.</translation>
    </message>
    <message>
        <source>!Global.redo():example</source>
        <translation>redo();</translation>
    </message>
    <message>
        <source>!Global.resultsFileName(FObject,path)</source>
        <translation>The name of a file that the program leaves.</translation>
    </message>
    <message>
        <source>!Global.resultsFileName(FObject,path):argument0</source>
        <translation>name of the file relative to the run folder</translation>
    </message>
    <message>
        <source>!Global.resultsFileName(FObject,path):example</source>
        <translation>.addEntry("Exports|field",resultsFileName("field.dat"));</translation>
    </message>
    <message>
        <source>!Global.resultsFileName(FObject,path):returnValue</source>
        <translation>the value</translation>
    </message>
    <message>
        <source>!Global.round(double,x)</source>
        <translation>The nearest whole number; halves away from zero.</translation>
    </message>
    <message>
        <source>!Global.select(FObjectList,objects)</source>
        <translation>Selects objects; the object editor shows them.</translation>
    </message>
    <message>
        <source>!Global.select(FObjectList,objects):argument0</source>
        <translation>a list of objects; an empty one selects nothing</translation>
    </message>
    <message>
        <source>!Global.select(FObjectList,objects):example</source>
        <translation>select([wide,width]);</translation>
    </message>
    <message>
        <source>!Global.sin(double,x)</source>
        <translation>Sine of an angle in radians.</translation>
    </message>
    <message>
        <source>!Global.sqrt(double,x)</source>
        <translation>Square root.</translation>
    </message>
    <message>
        <source>!Global.tan(double,x)</source>
        <translation>Tangent of an angle in radians.</translation>
    </message>
    <message>
        <source>!Global.undo()</source>
        <translation>Takes back the last step.</translation>
    </message>
    <message>
        <source>!Global.undo():example</source>
        <translation>undo();</translation>
    </message>
</context>
</TS>
